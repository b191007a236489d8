#include "account/nested_groups.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "bridge/owners.h"

namespace winutil::account {

namespace {

constexpr ULONG batchSize = 16;
constexpr std::size_t firstCapacity = 16;

// The groups of a walk in the order in which they were met: those that were searched, and behind them those
// that wait for it. Being listed is what keeps a group from being searched again.
class VisitedGroups {
public:
    VisitedGroups() noexcept = default;
    VisitedGroups(const VisitedGroups&) = delete;
    VisitedGroups& operator=(const VisitedGroups&) = delete;
    ~VisitedGroups() {
        while (takeNext()) {
        }
    }

    bool contains(const ObjectGuid& guid) const noexcept {
        for (std::size_t i = 0; i < count_; ++i) {
            if (isSame(entries_.get()[i].guid, guid)) {
                return true;
            }
        }
        return false;
    }

    // A group that there is no memory for is not searched: its way back would not be known.
    void add(const ObjectGuid& guid, ComPtr<IADsGroup> group) noexcept {
        if (count_ == capacity_ && !grow()) {
            return;
        }
        entries_.get()[count_++] = {guid, group.release()};
    }

    // Returns the next group to search, or none.
    ComPtr<IADsGroup> takeNext() noexcept {
        return ComPtr<IADsGroup>(next_ == count_ ? nullptr : entries_.get()[next_++].group);
    }

private:
    struct Entry {
        ObjectGuid guid;
        IADsGroup* group;  // owned until it is taken
    };

    bool grow() noexcept {
        const std::size_t capacity = capacity_ == 0 ? firstCapacity : 2 * capacity_;
        HeapMemory<Entry> entries = allocate<Entry>(capacity);
        if (!entries) {
            return false;
        }
        for (std::size_t i = 0; i < count_; ++i) {
            entries.get()[i] = entries_.get()[i];
        }
        entries_ = std::move(entries);
        capacity_ = capacity;
        return true;
    }

    HeapMemory<Entry> entries_;
    std::size_t count_ = 0;
    std::size_t capacity_ = 0;
    std::size_t next_ = 0;
};

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
    if (!visited.contains(guid)) {
        if (ComPtr<IADsGroup> group = bindAsGroup(object.get())) {
            visited.add(guid, std::move(group));
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
    visited.add(guid, std::move(group));
    while (const ComPtr<IADsGroup> next = visited.takeNext()) {
        if (searchGroup(next.get(), member, visited)) {
            return true;
        }
    }
    return false;
}

}  // namespace winutil::account
