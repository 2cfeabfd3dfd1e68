#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quirepress {

struct RegistryValue {
    std::string name;
    bool isNumber = false;
    std::uint32_t number = 0;
    std::string text;
};

// Small values of this user, shared by all processes. A key is a path of names joined by "\". Each call is
// atomic; 0 on success, -1 on failure (a value that is not there, or is of the other type).
class Registry {
public:
    virtual ~Registry() = default;
    virtual int ReadNumber(std::string_view key, std::string_view name, std::uint32_t& number) = 0;
    virtual int ReadText(std::string_view key, std::string_view name, std::string& text) = 0;
    virtual int WriteNumber(std::string_view key, std::string_view name, std::uint32_t number) = 0;
    virtual int WriteText(std::string_view key, std::string_view name, std::string_view text) = 0;
    virtual int EraseValue(std::string_view key, std::string_view name) = 0;
    // Every value of the key, in the order of their names; none when there is no such key.
    virtual std::vector<RegistryValue> ListValues(std::string_view key) = 0;
};

}  // namespace quirepress
