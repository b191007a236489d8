#include "account/directory_objects.h"

#include <cstring>
#include <cwchar>

namespace winutil::account {

bool isSame(const ObjectGuid& left, const ObjectGuid& right) noexcept {
    return _wcsicmp(left.text, right.text) == 0;
}

bool readObjectGuid(IDirectoryObject* object, ObjectGuid& guid) noexcept {
    wchar_t name[] = L"objectGUID";
    wchar_t* names[] = {name};
    AdsMemory<ADS_ATTR_INFO> attribute;
    DWORD count = 0;
    if (FAILED(object->GetObjectAttributes(names, 1, attribute.receive(), &count)) || !attribute ||
        count == 0 || attribute.get()->dwADsType != ADSTYPE_OCTET_STRING ||
        attribute.get()->dwNumValues == 0) {
        return false;
    }
    const ADS_OCTET_STRING& bytes = attribute.get()->pADsValues->OctetString;
    GUID value;
    if (bytes.dwLength != sizeof(value)) {
        return false;
    }
    std::memcpy(&value, bytes.lpValue, sizeof(value));
    return StringFromGUID2(value, guid.text, ObjectGuid::capacity) != 0;
}

}  // namespace winutil::account
