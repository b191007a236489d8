#include "call_sites.h"

#include <cstring>
#include <vector>

namespace testbed {

namespace {

// Instructions with a 32-bit distance behind them.
constexpr BYTE callNear = 0xE8;
constexpr BYTE indirect = 0xFF;
constexpr BYTE throughCell = 0x15;      // call [rip + distance]
constexpr BYTE jumpThroughCell = 0x25;  // jmp [rip + distance]

// What a distance that begins there leads to.
DWORD targetOf(const PeImage& image, DWORD distanceAt) {
    std::int32_t distance = 0;
    std::memcpy(&distance, image.at<BYTE>(distanceAt), sizeof distance);
    return distanceAt + static_cast<DWORD>(sizeof distance) + static_cast<DWORD>(distance);
}

class Scan {
public:
    explicit Scan(const PeImage& image) : image_(image) {
        for (const Import& import : image.imports()) {
            cells_.emplace(import.addressCell, import.name);
        }
    }

    // Calls of stubs come behind the stubs, so these are looked for first.
    std::map<DWORD, std::string> run() {
        forEachInstruction([this](DWORD at) {
            if (const std::string* name = cellName(at, jumpThroughCell)) {
                stubs_.emplace(at, *name);
            }
        });
        std::map<DWORD, std::string> sites;
        forEachInstruction([&](DWORD at) {
            if (const std::string* name = cellName(at, throughCell)) {
                sites.emplace(at + 6, *name);
            } else if (*image_.at<BYTE>(at) == callNear) {
                const auto stub = stubs_.find(targetOf(image_, at + 1));
                if (stub != stubs_.end()) {
                    sites.emplace(at + 5, stub->second);
                }
            }
        });
        return sites;
    }

private:
    // Every byte could begin one; that the distance leads exactly to a cell tells those that do.
    template <class Visit>
    void forEachInstruction(Visit&& visit) const {
        constexpr DWORD longest = 6;
        const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(&image_.headers());
        for (WORD i = 0; i < image_.headers().FileHeader.NumberOfSections; ++i, ++section) {
            const bool isCode = (section->Characteristics & IMAGE_SCN_CNT_CODE) != 0;
            const DWORD end = section->VirtualAddress + section->Misc.VirtualSize;
            for (DWORD at = section->VirtualAddress; isCode && at + longest <= end; ++at) {
                visit(at);
            }
        }
    }

    const std::string* cellName(DWORD at, BYTE kind) const {
        const BYTE* code = image_.at<BYTE>(at);
        if (code[0] != indirect || code[1] != kind) {
            return nullptr;
        }
        const auto cell = cells_.find(targetOf(image_, at + 2));
        return cell == cells_.end() ? nullptr : &cell->second;
    }

    const PeImage& image_;
    std::map<DWORD, std::string> cells_;
    std::map<DWORD, std::string> stubs_;
};

}  // namespace

std::map<DWORD, std::string> callSites(const PeImage& image) {
    return Scan(image).run();
}

const std::map<std::string, std::string>& unreachableCalls() {
    static const std::map<std::string, std::string> all = {
        {"SetFilePointerEx", "no native method opens a file for reading and preallocates it"},
        {"calloc", "the compiler's run time would register what ends the data of threads"},
        {"fwrite", "the compiler's run time would report a relocation that failed"},
        {"realloc", "the compiler's run time would make room for more functions to call at the end"},
    };
    return all;
}

}  // namespace testbed
