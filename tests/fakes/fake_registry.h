#pragma once

#include <map>
#include <utility>

#include "platform/registry.h"

namespace quirepress {

// A registry in memory.
class FakeRegistry : public Registry {
public:
    int ReadNumber(std::string_view key, std::string_view name, std::uint32_t& number) override;
    int ReadText(std::string_view key, std::string_view name, std::string& text) override;
    int WriteNumber(std::string_view key, std::string_view name, std::uint32_t number) override;
    int WriteText(std::string_view key, std::string_view name, std::string_view text) override;
    int EraseValue(std::string_view key, std::string_view name) override;
    std::vector<RegistryValue> ListValues(std::string_view key) override;

    // From now on (or no longer) nothing can be written.
    void RefuseWrites(bool refuse) { m_refusesWrites = refuse; }

private:
    const RegistryValue* Find(std::string_view key, std::string_view name) const;
    int Write(std::string_view key, const RegistryValue& value);

    std::map<std::string, std::map<std::string, RegistryValue>> m_keys;
    bool m_refusesWrites = false;
};

}  // namespace quirepress
