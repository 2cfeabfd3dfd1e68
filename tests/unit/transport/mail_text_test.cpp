#include "transport/mail_text.h"

#include <gtest/gtest.h>

#include "base/text.h"

namespace quirepress {
namespace {

TEST(MailTextTest, MailboxesHaveANameOrNone) {
    Mailbox mailbox;
    for (const std::string_view text : {"a@example.org", " a@example.org ", "<a@example.org>"}) {
        ASSERT_TRUE(ParseMailbox(text, mailbox)) << text;
        EXPECT_EQ(FormatMailbox(mailbox), "a@example.org");
    }
    ASSERT_TRUE(ParseMailbox("Print Room <a@example.org>", mailbox));
    EXPECT_EQ(FormatMailbox(mailbox), "Print Room <a@example.org>");
    ASSERT_TRUE(ParseMailbox("\"Room 5, \"east\"\" <a@example.org>", mailbox));
    EXPECT_EQ(FormatMailbox(mailbox), "\"Room 5, \\\"east\\\"\" <a@example.org>");
    ASSERT_TRUE(ParseMailbox("B\xC3\xBCro, 1 <a@example.org>", mailbox));
    EXPECT_EQ(FormatMailbox(mailbox), "=?UTF-8?B?QsO8cm8sIDE=?= <a@example.org>");
}

TEST(MailTextTest, AddressesCannotCarryCommands) {
    Mailbox mailbox{"", "untouched"};
    using namespace std::string_view_literals;
    for (const std::string_view text : {""sv, " "sv, "<>"sv, "a@example.org>"sv, "a@x>\r\nRCPT TO:<b@x"sv,
                                        "a@x\nBcc: b@x"sv, "a b@x"sv, "N <a@x\r>"sv, "a\0@x"sv, "<a<b@x>>"sv})
        EXPECT_FALSE(ParseMailbox(text, mailbox)) << text;
    EXPECT_EQ(mailbox.address, "untouched");
    ASSERT_TRUE(ParseMailbox("x\r\nBcc: b@x <a@x>", mailbox));
    EXPECT_EQ(FormatMailbox(mailbox), "\"x  Bcc: b@x\" <a@x>");
}

TEST(MailTextTest, SubjectsAreOneField) {
    EXPECT_EQ(EncodeHeaderText("Quirepress Print Error"), "Quirepress Print Error");
    EXPECT_EQ(EncodeHeaderText("a\r\nBcc: b@example.org"), "a  Bcc: b@example.org");
    EXPECT_EQ(EncodeHeaderText("=?x?="), "=?UTF-8?B?PT94Pz0=?=");
    EXPECT_EQ(EncodeHeaderText("caf\xE9"), "=?UTF-8?B?Y2Fmw6k=?=");
    std::string euros;
    for (int i = 0; i < 100; ++i) euros += "\xE2\x82\xAC";
    const std::string folded = EncodeHeaderText(euros + "\r\n" + std::string(1000, 'x'));
    for (const std::string_view line : SplitAt(folded, '\n'))
        EXPECT_TRUE(line.size() <= 76 && Contains(line, "=?UTF-8?B?")) << line;
}

TEST(MailTextTest, FileNamesAreKept) {
    EXPECT_EQ(FormatAttachmentField("a \"b\".pdf"),
              "Content-Disposition: attachment;\r\n filename=\"a \\\"b\\\".pdf\"");
    EXPECT_EQ(FormatAttachmentField("caf\xC3\xA9 '1'%.pdf"),
              "Content-Disposition: attachment;\r\n filename*=UTF-8''caf%C3%A9%20%271%27%25.pdf");
    EXPECT_EQ(FormatAttachmentField("a\r\nb"), "Content-Disposition: attachment;\r\n filename=\"a  b\"");
}

TEST(MailTextTest, DatesAndLines) {
    EXPECT_EQ(FormatMailDate(0), "Thu, 01 Jan 1970 00:00:00 +0000");
    EXPECT_EQ(FormatMailDate(1'709'251'199'999'999'999), "Thu, 29 Feb 2024 23:59:59 +0000");
    EXPECT_EQ(FormatMailDate(-1), "Wed, 31 Dec 1969 23:59:59 +0000");
    EXPECT_EQ(ToMailLines("a\nb\r\nc\rd"), "a\r\nb\r\nc\r\nd\r\n");
    EXPECT_EQ(ToMailLines(""), "\r\n");
}

}  // namespace
}  // namespace quirepress
