#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "platform/registry.h"
#include "platform/services.h"

namespace quirepress {
namespace {

class RegistryContract : public testing::Test {
protected:
    ~RegistryContract() override {
        for (const std::string& key : {m_key, m_key + "\\Sub"})
            for (const RegistryValue& value : registry().ListValues(key))
                registry().EraseValue(key, value.name);
    }

    Registry& registry() { return *m_services.registry; }
    // Of this test alone; the real registry is shared with other programs.
    const std::string& Key() const { return m_key; }

private:
    Services m_services = MakeSystemServices();
    std::string m_key = "Software\\Quirepress\\Test" + std::to_string(std::random_device()());
};

TEST_F(RegistryContract, KeepsNumbersAndTexts) {
    const std::string text = "C:\\a;b%41\r\n\t\x01 \xC3\xBC=\"x\" ";
    for (const std::uint32_t number : {0U, 7U, 4294967295U}) {
        EXPECT_EQ(registry().WriteNumber(Key(), "Count", number), 0);
        std::uint32_t read = 1;
        EXPECT_EQ(registry().ReadNumber(Key(), "Count", read), 0);
        EXPECT_EQ(read, number);
    }
    for (const std::string& value : {text, std::string(), std::string(5'000, 'x')}) {
        EXPECT_EQ(registry().WriteText(Key(), "File;1%", value), 0);
        std::string read = "before";
        EXPECT_EQ(registry().ReadText(Key(), "File;1%", read), 0);
        EXPECT_EQ(read, value);
    }
}

TEST_F(RegistryContract, FailsOnMissingValuesAndOtherTypes) {
    registry().WriteNumber(Key(), "number", 5);
    registry().WriteText(Key(), "text", "5");
    std::uint32_t number = 77;
    std::string text = "kept";
    EXPECT_EQ(registry().ReadNumber(Key(), "text", number), -1);
    EXPECT_EQ(registry().ReadNumber(Key(), "none", number), -1);
    EXPECT_EQ(registry().ReadNumber(Key() + "\\Sub", "number", number), -1);
    EXPECT_EQ(registry().ReadText(Key(), "number", text), -1);
    EXPECT_EQ(registry().ReadText(Key(), "none", text), -1);
    EXPECT_EQ(number, 77U);
    EXPECT_EQ(text, "kept");
    // A value takes on the type that it is written with.
    EXPECT_EQ(registry().WriteText(Key(), "number", "now a text"), 0);
    EXPECT_EQ(registry().ReadNumber(Key(), "number", number), -1);
    EXPECT_EQ(registry().ReadText(Key(), "number", text), 0);
}

TEST_F(RegistryContract, ListsAndErasesTheValuesOfOneKey) {
    for (const char* name : {"File2", "File1", "File3"}) registry().WriteText(Key(), name, name);
    registry().WriteNumber(Key() + "\\Sub", "File0", 1);
    EXPECT_EQ(registry().EraseValue(Key(), "File2"), 0);
    EXPECT_EQ(registry().EraseValue(Key(), "File2"), -1);
    EXPECT_EQ(registry().EraseValue(Key() + "\\None", "File1"), -1);
    const auto values = registry().ListValues(Key());
    ASSERT_EQ(values.size(), 2U);
    EXPECT_EQ(values[0].name, "File1");
    EXPECT_EQ(values[1].name, "File3");
    EXPECT_EQ(values[1].text, "File3");
    EXPECT_FALSE(values[1].isNumber);
    const auto below = registry().ListValues(Key() + "\\Sub");
    ASSERT_EQ(below.size(), 1U);
    EXPECT_TRUE(below[0].isNumber);
    EXPECT_TRUE(registry().ListValues(Key() + "\\None").empty());
}

// Another program sees at once what this one writes.
TEST(RegistryBetweenPrograms, IsShared) {
    Services one = MakeSystemServices();
    Services two = MakeSystemServices();
    const std::string key = "Software\\Quirepress\\Test" + std::to_string(std::random_device()());
    std::uint32_t read = 0;
    for (std::uint32_t i = 1; i <= 20; ++i) {
        Registry& writer = i % 2 == 0 ? *one.registry : *two.registry;
        EXPECT_EQ(writer.WriteNumber(key, "value" + std::to_string(i), i), 0);
        EXPECT_EQ(one.registry->ReadNumber(key, "value" + std::to_string(i), read), 0);
        EXPECT_EQ(read, i);
    }
    EXPECT_EQ(two.registry->ListValues(key).size(), 20U);
    for (const RegistryValue& value : one.registry->ListValues(key))
        EXPECT_EQ(two.registry->EraseValue(key, value.name), 0);
}

}  // namespace
}  // namespace quirepress
