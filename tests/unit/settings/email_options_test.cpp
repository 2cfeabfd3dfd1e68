#include "settings/email_options.h"

#include <filesystem>

#include "settings/settings_catalog.h"
#include "settings_fixture.h"

namespace quirepress {
namespace {

class EmailOptionsTest : public SettingsTest {};

TEST_F(EmailOptionsTest, SurvivesASaveInTheOrderOfItsWriter) {
    EmailOptions options;
    EXPECT_EQ(LoadEmailOptions(options, m_place), kSettingsNotRead);
    options.m_scheduledJob = options.m_printerAlert = options.m_printError = true;
    options.m_printsFinished = options.m_printsReady = options.m_attach = options.m_attachType = true;
    options.m_recipients = {"a@example.org", "B <b@example.org>"};
    options.m_sender = "qpr@example.org";
    options.m_server = "ssl:mail.example.org:465";
    options.m_userName = "user";
    options.m_password = " p\xC3\xA4ss ";
    ASSERT_EQ(SaveEmailOptions(options, m_place), kSettingsDone);
    EXPECT_EQ(m_folder.Read("email_setup.ini"),
              AsWritten("JOBSCHED\nPRINTERROR\nERROR\nJOB\nPRINTSREADY\nJOBATTACH\nJOBATTACHTYPE\n"
                        "EMAILTO;a@example.org\nEMAILTO;B <b@example.org>\nEMAILFROM;qpr@example.org\n"
                        "SMTP;ssl:mail.example.org:465\nEMAILUSERNAME;user\nEMAILPASSWORD; p\xC3\xA4ss \n"));
    EmailOptions read;
    read.m_recipients = {"of an earlier load"};
    ASSERT_EQ(LoadEmailOptions(read, m_place), kSettingsDone);
    EXPECT_EQ(read.m_recipients, options.m_recipients);
    EXPECT_EQ(read.m_password, options.m_password);
    EXPECT_TRUE(read.m_printsFinished && read.m_attachType);
}

TEST_F(EmailOptionsTest, NobodyElseReadsThePassword) {
    namespace fs = std::filesystem;
    const fs::path path = m_folder.Write("email_setup.ini", "EMAILPASSWORD;old\n");
    fs::permissions(path, fs::perms(0644));
    ASSERT_EQ(SaveEmailOptions({}, m_place), kSettingsDone);
    if (PlatformSeparator() == '/') {
        EXPECT_EQ(fs::status(path).permissions(), fs::perms(0600));
    }
    m_files.FailAlways(FaultyFiles::Call::kOpenForWriting, FileResult::kNoAccess);
    EXPECT_EQ(SaveEmailOptions({}, m_place), kSettingsNotWritten);
    ASSERT_EQ(m_prompts.boxes.size(), 1U);
    EXPECT_EQ(m_prompts.boxes[0].text, "Can't save to general_setup.ini file.");
}

TEST_F(EmailOptionsTest, RecipientsAreChangedTogether) {
    const auto document = OpenSettings("email", m_place);
    ASSERT_NE(document, nullptr);
    std::string message;
    std::vector<std::string> notes;
    EXPECT_EQ(document->ChangeKey("EMAILTO", {"a@example.org", "b@example.org"}, message, notes), 0);
    EXPECT_EQ(document->ChangeKey("EMAILTO", {}, message, notes), 1);
    ASSERT_EQ(document->Save(), kSettingsDone);
    EXPECT_TRUE(Contains(m_folder.Read("email_setup.ini"),
                         AsWritten("EMAILTO;a@example.org\nEMAILTO;b@example.org\n")));
}

}  // namespace
}  // namespace quirepress
