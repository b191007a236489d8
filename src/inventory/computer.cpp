#include "inventory/computer.h"

#include <cwchar>
#include <iterator>

#include "inventory/wmi_property.h"
#include "inventory/wmi_session.h"

namespace winutil::inventory {

namespace {

constexpr WmiQuery modelQuery{.text = L"SELECT * FROM Win32_ComputerSystem",
                              .failureText = L"Query for Computer System name failed."};
constexpr WmiQuery uuidQuery{.text = L"SELECT * FROM Win32_ComputerSystemProduct",
                             .failureText = L"Query for motherboard UUID failed."};

void copy(ComputerText& destination, const wchar_t* text) noexcept {
    wcsncpy_s(destination, std::size(destination), text, _TRUNCATE);
}

void append(ComputerText& destination, const wchar_t* text) noexcept {
    wcsncat_s(destination, std::size(destination), text, _TRUNCATE);
}

}  // namespace

bool readSystemModel(ComputerText& model, ErrorBuffer& errorBuffer) noexcept {
    model[0] = L'\0';
    WmiSession session;
    if (!session.run(modelQuery, errorBuffer)) {
        return false;
    }
    while (const auto object = session.next()) {
        copy(model, WmiProperty(object.get(), L"Manufacturer").text());
        const WmiProperty name(object.get(), L"Model");
        if (name.isText()) {
            append(model, L" ");
            append(model, name.text());
        }
    }
    return true;
}

bool readMotherboardUuid(ComputerText& uuid, ErrorBuffer& errorBuffer) noexcept {
    uuid[0] = L'\0';
    WmiSession session;
    if (!session.run(uuidQuery, errorBuffer)) {
        return false;
    }
    while (const auto object = session.next()) {
        copy(uuid, WmiProperty(object.get(), L"UUID").text());
    }
    return true;
}

}  // namespace winutil::inventory
