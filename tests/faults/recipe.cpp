#include "recipe.h"

#include <algorithm>

#include "text.h"

namespace testbed {

std::vector<Recipe>& recipes() {
    static std::vector<Recipe> all;
    return all;
}

std::vector<Recipe>& violatingRecipes() {
    static std::vector<Recipe> all;
    return all;
}

std::map<std::string, std::size_t> callsBetween(const std::map<std::string, std::size_t>& before,
                                                const std::map<std::string, std::size_t>& after) {
    std::map<std::string, std::size_t> calls;
    for (const auto& [function, count] : after) {
        const auto earlier = before.find(function);
        const std::size_t made = count - (earlier == before.end() ? 0 : earlier->second);
        if (made != 0) {
            calls.emplace(function, made);
        }
    }
    return calls;
}

std::string PlannedFault::name() const {
    std::string text = function + " " + std::to_string(occurrence) + (lasting ? " and later" : "");
    if (!fault) {
        return text;
    }
    if (fault->way == Fault::Way::cut) {
        return text + " cut short";
    }
    return text + " with " + codeText();
}

std::string PlannedFault::codeText() const {
    if (!fault) {
        return "";
    }
    return hex(fault->lastError && *fault->lastError != 0 ? *fault->lastError : fault->result);
}

bool isSaid(std::vector<Promises::Remark>& remarks, const std::string& function) {
    const auto found = std::ranges::find(remarks, function, &Promises::Remark::function);
    if (found != remarks.end()) {
        found->needed = true;
    }
    return found != remarks.end();
}

DWORD PlannedFault::code() const {
    if (!fault) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    return fault->lastError.value_or(static_cast<DWORD>(fault->result));
}

}  // namespace testbed
