#include "account/nested_groups.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "bridge/list.h"

namespace winutil::account {

namespace {

constexpr ULONG batchSize = 16;

// A group of a walk: one that was searched, or one that waits for it.
struct VisitedGroup {
    ObjectGuid guid;
    ComPtr<IADsGroup> group;  // none once it was searched
};

// In the order in which they were met. Being listed is what keeps a group from being searched again.
using VisitedGroups = List<VisitedGroup>;

bool contains(const VisitedGroups& visited, const ObjectGuid& guid) noexcept {
    return std::any_of(visited.begin(), visited.end(),
                       [&](const VisitedGroup& met) noexcept { return isSame(met.guid, guid); });
}

// A group that there is no memory for is not searched: its way back would not be known.
void add(VisitedGroups& visited, const ObjectGuid& guid, ComPtr<IADsGroup> group) noexcept {
    static_cast<void>(visited.append({.guid = guid, .group = std::move(group)}));
}

// Some of a group's members, cleared at the end of the scope.
class MemberBatch {
public:
    explicit MemberBatch(IEnumVARIANT* members) noexcept {
        for (VARIANT& member : members_) {
            VariantInit(&member);
        }
        if (FAILED(ADsEnumerateNext(members, batchSize, members_, &count_)) || count_ > batchSize) {
            count_ = 0;
        }
    }
    MemberBatch(const MemberBatch&) = delete;
    MemberBatch& operator=(const MemberBatch&) = delete;
    ~MemberBatch() {
        for (VARIANT& member : members_) {
            VariantClear(&member);
        }
    }

    bool empty() const noexcept { return count_ == 0; }
    const VARIANT* begin() const noexcept { return members_; }
    const VARIANT* end() const noexcept { return members_ + count_; }

private:
    VARIANT members_[batchSize];
    ULONG count_ = 0;
};

ComPtr<IEnumVARIANT> enumerateMembers(IADsGroup* group) noexcept {
    ComPtr<IADsMembers> members;
    ComPtr<IUnknown> enumerator;
    if (FAILED(group->Members(members.receive())) || !members ||
        FAILED(members->get__NewEnum(enumerator.receive())) || !enumerator) {
        return {};
    }
    return queryInterface<IEnumVARIANT>(enumerator.get(), IID_IEnumVARIANT);
}

// Binds a member as a group; none when it is not one.
ComPtr<IADsGroup> bindAsGroup(IDirectoryObject* member) noexcept {
    const ComPtr<IADs> properties = queryInterface<IADs>(member, IID_IADs);
    Bstr path;
    ComPtr<IADsGroup> group;
    if (!properties || FAILED(properties->get_ADsPath(path.receive())) || !path ||
        FAILED(bindObject(path.get(), IID_IADsGroup, group))) {
        return {};
    }
    return group;
}

// Returns whether an enumerated member is the wanted one. A group that was not met before is put down for its
// search.
bool isWanted(const VARIANT& member, const ObjectGuid& wanted, VisitedGroups& visited) noexcept {
    if (V_VT(&member) != VT_DISPATCH || V_DISPATCH(&member) == nullptr) {
        return false;
    }
    const auto object = queryInterface<IDirectoryObject>(V_DISPATCH(&member), IID_IDirectoryObject);
    ObjectGuid guid;
    if (!object || !readObjectGuid(object.get(), guid)) {
        return false;
    }
    if (isSame(guid, wanted)) {
        return true;
    }
    if (!contains(visited, guid)) {
        if (ComPtr<IADsGroup> group = bindAsGroup(object.get())) {
            add(visited, guid, std::move(group));
        }
    }
    return false;
}

bool searchGroup(IADsGroup* group, const ObjectGuid& wanted, VisitedGroups& visited) noexcept {
    const ComPtr<IEnumVARIANT> members = enumerateMembers(group);
    while (members) {
        const MemberBatch batch(members.get());
        if (batch.empty()) {
            return false;
        }
        if (std::any_of(batch.begin(), batch.end(),
                        [&](const VARIANT& member) noexcept { return isWanted(member, wanted, visited); })) {
            return true;
        }
    }
    return false;
}

}  // namespace

bool findNestedMember(ComPtr<IADsGroup> group, const ObjectGuid& member) noexcept {
    VisitedGroups visited;
    ObjectGuid guid = {};
    if (const auto object = queryInterface<IDirectoryObject>(group.get(), IID_IDirectoryObject)) {
        readObjectGuid(object.get(), guid);
    }
    // One without an identity is searched as well: it is the group that was asked for.
    add(visited, guid, std::move(group));
    // The list grows, and may move, while one of its groups is searched.
    for (std::size_t next = 0; visited.begin() + next != visited.end(); ++next) {
        const ComPtr<IADsGroup> searched = std::move(visited.begin()[next].group);
        if (searchGroup(searched.get(), member, visited)) {
            return true;
        }
    }
    return false;
}

}  // namespace winutil::account
