#include "fakes/fake_registry.h"

namespace quirepress {

int FakeRegistry::ReadNumber(std::string_view key, std::string_view name, std::uint32_t& number) {
    const RegistryValue* const value = Find(key, name);
    if (value == nullptr || !value->isNumber) return -1;
    number = value->number;
    return 0;
}

int FakeRegistry::ReadText(std::string_view key, std::string_view name, std::string& text) {
    const RegistryValue* const value = Find(key, name);
    if (value == nullptr || value->isNumber) return -1;
    text = value->text;
    return 0;
}

int FakeRegistry::WriteNumber(std::string_view key, std::string_view name, std::uint32_t number) {
    return Write(key, {std::string(name), true, number, {}});
}

int FakeRegistry::WriteText(std::string_view key, std::string_view name, std::string_view text) {
    return Write(key, {std::string(name), false, 0, std::string(text)});
}

int FakeRegistry::EraseValue(std::string_view key, std::string_view name) {
    const auto found = m_keys.find(std::string(key));
    if (m_refusesWrites || found == m_keys.end()) return -1;
    return found->second.erase(std::string(name)) == 1 ? 0 : -1;
}

std::vector<RegistryValue> FakeRegistry::ListValues(std::string_view key) {
    std::vector<RegistryValue> values;
    const auto found = m_keys.find(std::string(key));
    if (found == m_keys.end()) return values;
    for (const auto& [name, value] : found->second) values.push_back(value);
    return values;
}

const RegistryValue* FakeRegistry::Find(std::string_view key, std::string_view name) const {
    const auto found = m_keys.find(std::string(key));
    if (found == m_keys.end()) return nullptr;
    const auto value = found->second.find(std::string(name));
    return value == found->second.end() ? nullptr : &value->second;
}

int FakeRegistry::Write(std::string_view key, const RegistryValue& value) {
    if (m_refusesWrites) return -1;
    m_keys[std::string(key)][value.name] = value;
    return 0;
}

}  // namespace quirepress
