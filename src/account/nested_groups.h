#pragma once

#include "account/directory_objects.h"

namespace winutil::account {

// Returns whether an object is a member of a group by way of other groups. Each group is searched once,
// however the groups refer to each other, and no depth of nesting costs any stack. A member that cannot be
// read is passed over.
bool findNestedMember(ComPtr<IADsGroup> group, const ObjectGuid& member) noexcept;

}  // namespace winutil::account
