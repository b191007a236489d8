#pragma once

#include <functional>
#include <string>
#include <vector>

#include "fake_network.h"
#include "winutil_fixture.h"

namespace testbed {

// A fake network, and a collector that keeps what it is handed.
class NetworkListing : public WinUtilTest {
protected:
    static constexpr char addEntrySignature[] =
        "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;"
        "Ljava/lang/String;Ljava/lang/String;)V";

    bool list() { return NATIVE(getNetUsed)(collector); }

    // What was handed over at one place, of all entries; place 5 is the remote name.
    std::vector<std::wstring> column(std::size_t place) const {
        std::vector<std::wstring> texts;
        for (const auto& entry : entries) {
            texts.push_back(entry.at(place));
        }
        return texts;
    }
    std::vector<std::wstring> remoteNames() const { return column(5); }

    FakeNetwork network{system()};
    std::vector<std::vector<std::wstring>> entries;
    std::function<void()> onEntry = [] {};
    JavaObject collector = java.collector("addEntry", addEntrySignature, [this](const Arguments& arguments) {
        std::vector<std::wstring> texts;
        for (const Value& argument : arguments) {
            texts.push_back(argument.text());
        }
        entries.push_back(std::move(texts));
        onEntry();
    });
};

}  // namespace testbed
