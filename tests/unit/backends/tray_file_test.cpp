#include "backends/tray_file.h"

#include <gtest/gtest.h>

#include "fakes/surroundings.h"

namespace quirepress {
namespace {

const std::string kName24 = "123456789012345678901234";
const std::string kName25 = kName24 + "5";
const std::string kUmlauts24 = "\xC3\xBC" + kName24.substr(1);

class TrayFile : public testing::Test, protected Surroundings {
protected:
    int Save(std::string_view name) { return SaveTrayFile(files, m_path, name, m_message); }
    int Load(std::string_view bytes) {
        m_name = "untouched";
        return LoadTrayFile(files, folder.Write("read.tra", bytes), m_name, m_message);
    }

    std::string m_path = folder.PathOf("a.tra");
    std::string m_name;
    std::string m_message;
};

TEST_F(TrayFile, KeepsNamesOf24CharactersAndRefusesLongerOnes) {
    for (const std::string& name : {std::string("Upper"), kName24, kUmlauts24}) {
        EXPECT_EQ(Save(name), 0) << m_message;
        EXPECT_EQ(m_message, "Tray file saved.");
        EXPECT_EQ(Load(folder.Read("a.tra")), 0) << m_message;
        EXPECT_EQ(m_name, name);
    }
    for (const std::string& name : {kName25, kUmlauts24 + "5", std::string(), std::string("two\nlines")}) {
        EXPECT_EQ(Save(name), -1) << name;
        EXPECT_EQ(folder.Read("a.tra"), kUmlauts24);
    }
    EXPECT_EQ(Load(kName25), -1);
    EXPECT_NE(m_message.find("longer than 24 characters"), std::string::npos) << m_message;
    EXPECT_EQ(m_name, "untouched");
}

TEST_F(TrayFile, SaysThatItCannotBeWritten) {
    m_path = folder.PathOf("none/a.tra");
    EXPECT_EQ(Save("Upper"), -1);
    EXPECT_EQ(m_message, "Can't open tray file for writing: " + m_path);
}

TEST_F(TrayFile, IsReadAsOtherProgramsWriteIt) {
    using std::string_literals::operator""s;
    for (const std::string& bytes :
         {"Upper tray"s, "Upper tray\r\n"s, "Upper tray\nmore"s, "Upper tray  "s, "Upper tray\0\0\0\xFF"s}) {
        EXPECT_EQ(Load(bytes), 0) << m_message;
        EXPECT_EQ(m_name, "Upper tray");
    }
    for (const std::string& bytes : {""s, "\r\n"s, "\0\0"s, "   "s, std::string(5000, 'x')}) {
        EXPECT_EQ(Load(bytes), -1);
        EXPECT_NE(m_message, "");
    }
    EXPECT_EQ(LoadTrayFile(files, Home(), m_name, m_message), -1);
}

}  // namespace
}  // namespace quirepress
