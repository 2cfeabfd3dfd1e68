#include "backends/printer_settings_file.h"

#include <gtest/gtest.h>

#include "backends/tray_file.h"
#include "base/little_endian.h"
#include "fakes/memory_file.h"
#include "fakes/surroundings.h"

namespace quirepress {
namespace {

std::string Length(std::uint32_t value) {
    std::string bytes(4, '\0');
    WriteLittle32(bytes, 0, value);
    return bytes;
}

const std::string kMode = "the device mode";
const std::string kNames = "names";
const std::string kFile = Length(15) + kMode + Length(5) + kNames;

PrsReading Read(const std::string& bytes, PrsContent& content) {
    MemoryFile file(bytes);
    const PrsReading reading = ReadPrintSetup(file, content);
    EXPECT_LE(file.BytesRead(), static_cast<std::int64_t>(bytes.size()));
    return reading;
}

TEST(PrinterSettingsFile, IsReadWholeAndCutShortAtEveryLength) {
    for (std::size_t size = 0; size <= kFile.size(); ++size) {
        PrsContent content;
        const PrsReading reading = Read(kFile.substr(0, size), content);
        if (size < 19) {
            EXPECT_EQ(reading, PrsReading::kModeCutShort) << size;
            continue;
        }
        EXPECT_EQ(content.mode.bytes, kMode) << size;
        EXPECT_EQ(content.names.bytes, size == kFile.size() ? kNames : "") << size;
        EXPECT_EQ(reading, size == 19             ? PrsReading::kWithoutNames
                           : size == kFile.size() ? PrsReading::kWhole
                                                  : PrsReading::kNamesCutShort)
            << size;
    }
    PrsContent content;
    EXPECT_EQ(Read(kFile + "what follows is not ours", content), PrsReading::kWhole);
    EXPECT_EQ(Read(Length(0) + Length(0), content), PrsReading::kWhole);
}

TEST(PrinterSettingsFile, IsNotTakenInByItsLengths) {
    for (const std::uint32_t lie : {kLongestPrsBlock + 1, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        PrsContent content;
        EXPECT_EQ(Read(Length(lie) + kMode, content), PrsReading::kModeTooLong);
        EXPECT_EQ(content.mode.length, lie);
        EXPECT_EQ(Read(Length(15) + kMode + Length(lie) + kNames, content), PrsReading::kNamesTooLong);
        EXPECT_LT(content.mode.bytes.capacity() + content.names.bytes.capacity(), 100U);
    }
    PrsContent content;
    EXPECT_EQ(Read(Length(kLongestPrsBlock) + kMode, content), PrsReading::kModeCutShort);
    EXPECT_LT(content.mode.bytes.capacity(), 100U);
}

TEST(PrinterSettingsFile, SaysWhatIsWrongWithAFile) {
    Surroundings around;
    PrsContent content;
    std::string message;
    EXPECT_EQ(ReadPrintSetup(around.files, around.folder.PathOf("none.prs"), content, message),
              PrsReading::kUnreadable);
    EXPECT_NE(message.find("none.prs can't be opened"), std::string::npos) << message;
    EXPECT_EQ(ReadPrintSetup(around.files, around.Home(), content, message), PrsReading::kUnreadable);
    const std::string path = around.folder.Write("a.prs", kFile);
    EXPECT_EQ(ReadPrintSetup(around.files, path, content, message), PrsReading::kWhole);
    EXPECT_EQ(message, "");
    around.files.FailOnce(FaultyFiles::Call::kReadAt, FileResult::kFailed, 4);
    EXPECT_EQ(ReadPrintSetup(around.files, path, content, message), PrsReading::kUnreadable);
    EXPECT_NE(message.find("can't be read"), std::string::npos) << message;
}

TEST(PrinterSettingsFile, IsWrittenWholeOrNotAtAll) {
    Surroundings around;
    around.debugLog.Open(*around.system.files, around.folder.PathOf("qpr.log"));
    const std::string path = around.folder.PathOf("a.prs");
    EXPECT_EQ(WritePrintSetup(around.files, around.debugLog, path, {kMode, kNames}), FileResult::kDone);
    EXPECT_EQ(around.folder.Read("a.prs"), kFile);
    EXPECT_EQ(around.folder.Read("qpr.log"), "");

    around.files.FillDiskAfter(10);
    EXPECT_EQ(WritePrintSetup(around.files, around.debugLog, path, {kMode, "other"}), FileResult::kNoSpace);
    around.files.Heal();
    around.files.FillDiskAfter(25);
    EXPECT_EQ(WritePrintSetup(around.files, around.debugLog, path, {kMode, "other"}), FileResult::kNoSpace);
    around.files.Heal();
    EXPECT_EQ(WritePrintSetup(around.files, around.debugLog, around.folder.PathOf("none/a.prs"), {}),
              FileResult::kMissing);
    EXPECT_EQ(around.folder.Read("a.prs"), kFile);
    EXPECT_EQ(around.folder.Read("qpr.log"),
              "printersettings: problem writing DevMode 15 <-> 0\n"
              "printersettings: problem writing DevNames 5 <-> 0\n"
              "printersettings: problem writing DevNames 5 <-> 0\n"
              "error at CreateFile: 1\n");
}

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
