#include "platform/windows/environment.h"

#include <windows.h>

#include <map>

#include "platform/windows/system_text.h"

namespace quirepress {
namespace {

// The system wants the names sorted so; case does not tell them apart.
struct NameOrder {
    bool operator()(const std::wstring& left, const std::wstring& right) const {
        return CompareStringOrdinal(left.c_str(), -1, right.c_str(), -1, TRUE) == CSTR_LESS_THAN;
    }
};

}  // namespace

std::wstring MakeEnvironment(const std::vector<std::pair<std::string, std::string>>& added) {
    std::map<std::wstring, std::wstring, NameOrder> variables;
    wchar_t* const own = GetEnvironmentStringsW();
    for (const wchar_t* entry = own; entry != nullptr && *entry != L'\0';) {
        const std::wstring text = entry;
        // From the second character: "=C:" is the name of drive C's current folder.
        const std::size_t equals = text.find(L'=', 1);
        if (equals != std::wstring::npos) variables[text.substr(0, equals)] = text.substr(equals + 1);
        entry += text.size() + 1;
    }
    FreeEnvironmentStringsW(own);
    for (const auto& [name, value] : added) variables[Widen(name)] = Widen(value);

    std::wstring block;
    for (const auto& [name, value] : variables) block.append(name).append(L"=").append(value) += L'\0';
    block += L'\0';
    return block;
}

}  // namespace quirepress
