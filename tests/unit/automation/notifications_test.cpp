#include "automation/notifications.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "automation/mail_server_text.h"
#include "fakes/fake_mail_sender.h"
#include "fakes/surroundings.h"
#include "logs/error_log.h"

namespace quirepress {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST(MailServerTextTest, HostPortAndEncryption) {
    const auto parse = [](std::string_view text) {
        const MailServer server = ParseMailServer(text);
        return server.host + "|" + std::to_string(server.port) + (server.isSsl ? "|ssl" : "");
    };
    EXPECT_EQ(parse("mail.example.org"), "mail.example.org|0");
    EXPECT_EQ(parse("ssl:mail.example.org:465"), "mail.example.org|465|ssl");
    EXPECT_EQ(parse("ssl:mail.example.org"), "mail.example.org|0|ssl");
    EXPECT_EQ(parse("mail.example.org:2525:x"), "mail.example.org|2525");
    EXPECT_EQ(parse("mail.example.org: 26x"), "mail.example.org|26");
    EXPECT_EQ(parse("mail.example.org:smtp"), "mail.example.org|0");
    EXPECT_EQ(parse("ssl:ssl:mailssl:.example.org"), "mail.example.org|0|ssl");
    EXPECT_EQ(parse("SSL:mail.example.org"), "SSL|0");
    EXPECT_EQ(parse("ssl:"), "|0|ssl");
    EXPECT_EQ(parse(""), "|0");
}

class NotificationsTest : public testing::Test {
protected:
    NotificationsTest() {
        m_email.m_recipients = {"one@example.org", "two@example.org", "three@example.org"};
        m_email.m_sender = "qpr@example.org";
        m_email.m_server = "ssl:mail.example.org:466";
        m_email.m_userName = "user";
        m_email.m_password = "pass";
    }
    std::vector<std::string> SubjectsOfAllKinds() {
        m_mail.sent.clear();
        m_email.m_recipients = {"one@example.org"};
        std::vector<std::string> subjects;
        for (int kind = -1; kind <= 8; ++kind) m_notifications.Notify(kind, "body", "");
        for (const MailMessage& message : m_mail.sent) subjects.push_back(message.subject);
        return subjects;
    }

    Surroundings m_around;
    FakeMailSender m_mail;
    EmailOptions m_email;
    GeneralOptions m_options;
    ErrorLog m_errorLog{m_around.files, m_around.clock, m_around.folder.PathOf("error.log")};
    Notifications m_notifications{
        {m_mail, m_around.loop, m_around.prompts, m_around.debugLog, m_errorLog, m_email, m_options}};
};

TEST_F(NotificationsTest, EachKindHasItsSwitchAndTheFifthHasNone) {
    const std::string always = "Quirepress Prints Finished";
    EXPECT_THAT(SubjectsOfAllKinds(), ElementsAre(always));
    const std::pair<bool EmailOptions::*, const char*> kinds[] = {
        {&EmailOptions::m_scheduledJob, "Quirepress Scheduled Job Finished"},
        {&EmailOptions::m_printError, "Quirepress Print Error"},
        {&EmailOptions::m_printerAlert, "Quirepress Printer Alert"},
        {&EmailOptions::m_printsFinished, "Quirepress Prints Finished"}};
    for (const auto& [flag, subject] : kinds) {
        m_email.*flag = true;
        EXPECT_THAT(SubjectsOfAllKinds(), ElementsAre(subject, always));
        m_email.*flag = false;
    }
    m_email.m_printsReady = true;
    EXPECT_THAT(SubjectsOfAllKinds(), ElementsAre(always, "Quirepress Prints Ready"));
}

TEST_F(NotificationsTest, EveryRecipientGetsAMessageOfHisOwn) {
    m_email.m_attach = true;
    m_notifications.SendNotification(5, "the body", "/data/report.pdf");
    EXPECT_EQ(m_mail.server, "mail.example.org 466 ssl user:pass");
    EXPECT_THAT(m_mail.asked, ElementsAre("one@example.org", "two@example.org", "three@example.org"));
    EXPECT_EQ(m_mail.sent[1].body, "the body");
    EXPECT_EQ(m_mail.sent[1].sender, "qpr@example.org");
    EXPECT_THAT(m_mail.sent[1].attachments, ElementsAre("/data/report.pdf"));
    EXPECT_EQ(m_notifications.LastReport().sent, 3);
    m_notifications.SendNotification(5, "", "");
    EXPECT_THAT(m_mail.sent[3].attachments, IsEmpty());
    m_email.m_attach = false;
    m_notifications.SendNotification(5, "", "/data/report.pdf");
    EXPECT_THAT(m_mail.sent[6].attachments, IsEmpty());
    EXPECT_THAT(m_around.prompts.boxes, IsEmpty());
}

TEST_F(NotificationsTest, TheFirstFailureEndsANotificationQuietly) {
    m_mail.FailFor("two@example.org", "the server said no");
    m_options.m_errorLog = true;
    m_around.debugLog.Open(m_around.files, m_around.folder.PathOf("qpr.log"));
    m_notifications.SendNotification(5, "body", "");
    EXPECT_THAT(m_mail.asked, ElementsAre("one@example.org", "two@example.org"));
    EXPECT_THAT(m_around.prompts.boxes, IsEmpty());
    std::vector<std::vector<std::string>> records;
    ASSERT_EQ(ReadRecords(m_around.files, m_errorLog.Path(), ErrorRecordLayout(), records), 0);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0][kErrorSourceColumn], "Quirepress Prints Finished");
    EXPECT_EQ(records[0][3], "two@example.org");
    EXPECT_EQ(records[0][4], "Email not sent: the server said no");
    EXPECT_THAT(m_around.folder.Read("qpr.log"),
                HasSubstr("to: two@example.org, error: the server said no\r\n"));
    EXPECT_EQ(m_notifications.LastReport().failed, 1);
    m_options.m_errorLog = false;
    m_notifications.SendNotification(5, "body", "");
    records.clear();
    ASSERT_EQ(ReadRecords(m_around.files, m_errorLog.Path(), ErrorRecordLayout(), records), 0);
    EXPECT_EQ(records.size(), 1U);
}

// Else each row that fails would wait for it once more.
TEST_F(NotificationsTest, AServerThatKeepsSilentIsLeftAloneForAWhile) {
    m_options.m_errorLog = m_email.m_printError = true;
    m_email.m_recipients = {"one@example.org"};
    m_mail.FailFor("one@example.org", "the server took too long");
    m_mail.whileSending = [this] { m_around.loop.Advance(15'000); };
    for (int row = 0; row < 20; ++row) m_notifications.Notify(2, "body", "");
    EXPECT_EQ(m_mail.asked.size(), 1U);
    EXPECT_EQ(m_notifications.LastReport().failed, 1);
    m_around.loop.Advance(5 * 60'000);
    m_notifications.Notify(2, "body", "");
    m_notifications.Notify(2, "body", "");
    EXPECT_EQ(m_mail.asked.size(), 2U);

    m_email.m_printsFinished = true;
    m_mail.HealAll();
    m_notifications.Notify(4, "the end", "");
    ASSERT_EQ(m_mail.sent.size(), 1U);
    const std::string text = "20 earlier message(s) not sent, since the mail server did not answer";
    EXPECT_EQ(m_mail.sent[0].body, "the end\r\n" + text + ".\r\n");
    EXPECT_THAT(m_around.folder.Read("error.log"), HasSubstr(text));
    m_notifications.Notify(2, "body", "");
    EXPECT_EQ(m_mail.sent.size(), 2U) << "it has answered again";

    // Another server has its own chance, and a refusal costs no time.
    m_mail.FailFor("one@example.org", "no");
    m_notifications.Notify(2, "body", "");
    m_notifications.Notify(2, "body", "");
    EXPECT_EQ(m_mail.asked.size(), 5U);
    m_email.m_server = "other.example.org";
    m_mail.whileSending = nullptr;
    m_notifications.Notify(2, "body", "");
    m_notifications.Notify(2, "body", "");
    EXPECT_EQ(m_mail.asked.size(), 7U);
}

// Who has pressed Ctrl-C once does not have to wait again.
TEST_F(NotificationsTest, AServerThatSomebodyHasNotWaitedForIsLeftAloneToTheEndOfTheRun) {
    m_options.m_errorLog = m_email.m_printError = m_email.m_printsFinished = true;
    m_email.m_recipients = {"one@example.org"};
    m_mail.FailFor("one@example.org", "it was stopped");
    m_mail.wasStopped = true;
    for (const int kind : {2, 2, 2, 4}) m_notifications.Notify(kind, "body", "");
    EXPECT_EQ(m_mail.asked.size(), 1U);
    EXPECT_EQ(m_notifications.LastReport().failed, 1);
    const std::string errors = m_around.folder.Read("error.log");
    EXPECT_THAT(errors, HasSubstr("2 earlier message(s) not sent"));
    EXPECT_THAT(errors, HasSubstr("Email not sent: the mail server did not answer a short while ago"));

    m_around.loop.Advance(5 * 60'000);
    m_mail.HealAll();
    m_notifications.Notify(4, "body", "");
    ASSERT_EQ(m_mail.sent.size(), 1U);
    EXPECT_EQ(m_mail.sent[0].body, "body") << "the end was not held back for the next run";
}

TEST_F(NotificationsTest, TheTestMessageGoesToEverybody) {
    m_mail.FailFor("two@example.org", "the server said no");
    m_notifications.SendTestMessage();
    EXPECT_EQ(m_mail.asked.size(), 3U);
    EXPECT_EQ(m_mail.sent[0].subject, "Quirepress Test Message");
    EXPECT_EQ(m_mail.sent[0].body, "This is a test message");
    ASSERT_EQ(m_around.prompts.boxes.size(), 2U);
    EXPECT_EQ(m_around.prompts.boxes[0].text,
              "Error in configuration, message not sent to: two@example.org\n(the server said no)");
    EXPECT_EQ(m_around.prompts.boxes[1].text, "Message(s) Sent Successfully.");
    EXPECT_EQ(m_notifications.LastReport().failed, 1);
}

TEST_F(NotificationsTest, NobodyAndNoComponent) {
    m_mail.SetAvailable(false);
    m_notifications.SendNotification(5, "body", "");
    ASSERT_EQ(m_around.prompts.boxes.size(), 1U);
    EXPECT_EQ(m_around.prompts.boxes[0].text, "Mail Component unlock failed");
    m_email.m_recipients.clear();
    m_notifications.SendNotification(5, "body", "");
    m_notifications.SendTestMessage();
    EXPECT_EQ(m_around.prompts.boxes.size(), 1U);
    EXPECT_THAT(m_mail.asked, IsEmpty());
}

}  // namespace
}  // namespace quirepress
