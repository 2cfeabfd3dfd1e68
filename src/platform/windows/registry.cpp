#include "platform/registry.h"

#include <windows.h>

#include <algorithm>

#include "platform/windows/make_services.h"
#include "platform/windows/system_text.h"

namespace quirepress {
namespace {

// A key of this user's part of the registry, opened for one call.
class OpenKey {
public:
    OpenKey(std::string_view path, REGSAM access) {
        if (RegOpenKeyExW(HKEY_CURRENT_USER, Widen(path).c_str(), 0, access, &m_key) != ERROR_SUCCESS)
            m_key = nullptr;
    }
    ~OpenKey() {
        if (m_key != nullptr) RegCloseKey(m_key);
    }
    OpenKey(const OpenKey&) = delete;
    OpenKey& operator=(const OpenKey&) = delete;
    HKEY Get() const { return m_key; }

private:
    HKEY m_key = nullptr;
};

int ReadValue(HKEY key, const std::wstring& name, RegistryValue& value) {
    std::wstring text(256, L'\0');
    for (;;) {
        DWORD type = REG_NONE;
        auto size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
        const LSTATUS result = RegGetValueW(key, nullptr, name.c_str(), RRF_RT_REG_DWORD | RRF_RT_REG_SZ,
                                            &type, text.data(), &size);
        if (result == ERROR_MORE_DATA) {
            text.resize(std::max<std::size_t>(text.size() * 2, size / sizeof(wchar_t) + 1));
            continue;
        }
        if (result != ERROR_SUCCESS) return -1;
        value.name = Narrow(name);
        value.isNumber = type == REG_DWORD;
        if (value.isNumber) {
            std::copy_n(reinterpret_cast<const char*>(text.data()), sizeof value.number,
                        reinterpret_cast<char*>(&value.number));
        } else {
            value.text = Narrow(text.c_str());
        }
        return 0;
    }
}

int ReadValueOfType(std::string_view key, std::string_view name, bool isNumber, RegistryValue& value) {
    const OpenKey open(key, KEY_QUERY_VALUE);
    if (open.Get() == nullptr || ReadValue(open.Get(), Widen(name), value) != 0) return -1;
    return value.isNumber == isNumber ? 0 : -1;
}

int WriteValue(std::string_view key, std::string_view name, DWORD type, const void* data, std::size_t size) {
    const LSTATUS result = RegSetKeyValueW(HKEY_CURRENT_USER, Widen(key).c_str(), Widen(name).c_str(), type,
                                           data, static_cast<DWORD>(size));
    return result == ERROR_SUCCESS ? 0 : -1;
}

class WindowsRegistry : public Registry {
public:
    int ReadNumber(std::string_view key, std::string_view name, std::uint32_t& number) override {
        RegistryValue value;
        if (ReadValueOfType(key, name, true, value) != 0) return -1;
        number = value.number;
        return 0;
    }

    int ReadText(std::string_view key, std::string_view name, std::string& text) override {
        RegistryValue value;
        if (ReadValueOfType(key, name, false, value) != 0) return -1;
        text = value.text;
        return 0;
    }

    int WriteNumber(std::string_view key, std::string_view name, std::uint32_t number) override {
        return WriteValue(key, name, REG_DWORD, &number, sizeof number);
    }

    int WriteText(std::string_view key, std::string_view name, std::string_view text) override {
        const std::wstring wide = Widen(text);
        return WriteValue(key, name, REG_SZ, wide.c_str(), (wide.size() + 1) * sizeof(wchar_t));
    }

    int EraseValue(std::string_view key, std::string_view name) override {
        const OpenKey open(key, KEY_SET_VALUE);
        const bool erased =
            open.Get() != nullptr && RegDeleteValueW(open.Get(), Widen(name).c_str()) == ERROR_SUCCESS;
        return erased ? 0 : -1;
    }

    std::vector<RegistryValue> ListValues(std::string_view key) override {
        std::vector<RegistryValue> values;
        const OpenKey open(key, KEY_QUERY_VALUE);
        constexpr DWORD kLongestName = 16384;  // the system's limit, with the NUL
        std::wstring name(kLongestName, L'\0');
        for (DWORD i = 0; open.Get() != nullptr; ++i) {
            DWORD size = kLongestName;
            if (RegEnumValueW(open.Get(), i, name.data(), &size, nullptr, nullptr, nullptr, nullptr) !=
                ERROR_SUCCESS)
                break;
            RegistryValue value;
            if (ReadValue(open.Get(), name.substr(0, size), value) == 0) values.push_back(std::move(value));
        }
        std::sort(values.begin(), values.end(), [](const RegistryValue& left, const RegistryValue& right) {
            return left.name < right.name;
        });
        return values;
    }
};

}  // namespace

std::unique_ptr<Registry> MakeRegistry() {
    return std::make_unique<WindowsRegistry>();
}

}  // namespace quirepress
