#include "transport/curl_mail_sender.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <array>
#include <atomic>
#include <chrono>
#include <nlohmann/json.hpp>
#include <thread>

#include "fakes/surroundings.h"
#include "platform/clock.h"
#include "platform/event_loop.h"
#include "rig/loopback_server.h"
#include "rig/python_server.h"

namespace quirepress {
namespace {

using ::testing::HasSubstr;

const TemporaryFolder& Folder() {
    static const TemporaryFolder folder;
    return folder;
}

const std::string& Certificate() {
    static Services services = MakeSystemServices();
    static const std::string path = MakeCertificate(services, Folder());
    return path;
}

class CurlMailSenderTest : public testing::Test, protected Surroundings {
protected:
    std::unique_ptr<MailManager> Open(int port, bool isSsl = false) {
        CurlMailSender sender({files,
                               *system.clock,
                               {*system.loop, m_trusted},
                               "print room",
                               [this] { return m_interrupts; },
                               m_limits});
        EXPECT_TRUE(sender.Unlock());
        auto manager = sender.CreateManager();
        manager->SetSmtpHost("localhost");
        manager->SetSmtpPort(port);
        manager->SetSsl(isSsl);
        return manager;
    }
    static MailMessage Message() { return {"Subject", "Body", "qpr@example.org", "office@example.org", {}}; }
    static nlohmann::json Received(const TestMailServer& server, int number = 1) {
        const std::string text = server.Message(number);
        return text.empty() ? nlohmann::json() : nlohmann::json::parse(text);
    }

    TransferLimits m_limits = {20'000, 20, 60'000};
    std::string m_trusted;
    int m_interrupts = 0;
    std::atomic<bool> m_isGivenUp = false;
};

TEST_F(CurlMailSenderTest, AMessageArrivesAsItWasWritten) {
    const TestMailServer server(system);
    MailMessage message = Message();
    message.subject = "Quirepress \xE2\x82\xAC\r\nBcc: somebody@example.org";
    message.body = "Caf\xC3\xA9 =3D\n.\n\n..dots\r\n" + std::string(2000, 'x');
    message.recipient = "B\xC3\xBCro <office@example.org>";
    std::string bytes;
    for (int i = 0; i < 70'000; ++i) bytes += static_cast<char>(i * 7);
    message.attachments = {folder.Write("caf\xC3\xA9 \"1\".pdf", bytes), folder.Write("empty.txt", "")};
    const auto manager = Open(server.Port());
    ASSERT_TRUE(manager->Send(message)) << manager->FailureText();

    const nlohmann::json got = Received(server);
    EXPECT_EQ(got["sender"], "qpr@example.org");
    EXPECT_EQ(got["recipients"], nlohmann::json::array({"office@example.org"}));
    EXPECT_EQ(got["defects"], nlohmann::json::array());
    EXPECT_EQ(got["subject"], "Quirepress \xE2\x82\xAC  Bcc: somebody@example.org");
    EXPECT_EQ(got["to"], "B\xC3\xBCro <office@example.org>");
    EXPECT_EQ(got["fields"], (nlohmann::json{"Auto-Submitted", "Content-Type", "Date", "From", "Message-ID",
                                             "Mime-Version", "Subject", "To"}));
    EXPECT_EQ(got["body"], "Caf\xC3\xA9 =3D\n.\n\n..dots\n" + std::string(2000, 'x') + "\n");
    ASSERT_EQ(got["attachments"].size(), 2U);
    EXPECT_EQ(got["attachments"][0]["name"], "caf\xC3\xA9 \"1\".pdf");
    EXPECT_EQ(got["attachments"][0]["type"], "application/pdf");
    EXPECT_EQ(got["attachments"][0]["bytes"].get<std::string>().size(), (bytes.size() + 2) / 3 * 4);
    EXPECT_THAT(got["attachments"][0]["bytes"].get<std::string>(), testing::StartsWith("AAcOFRwjKjE4P0ZN"));
    EXPECT_EQ(got["attachments"][1]["bytes"], "");
}

TEST_F(CurlMailSenderTest, WhatCannotBeAttachedIsNamedInTheBody) {
    const TestMailServer server(system);
    MailMessage message = Message();
    const std::string pipe = folder.PathOf("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string large = folder.Write("large.pdf", std::string(19 << 20, 'x'));
    message.attachments = {folder.PathOf("gone.pdf"), pipe, folder.Path(), large};
    ASSERT_TRUE(Open(server.Port())->Send(message));
    const nlohmann::json got = Received(server);
    EXPECT_EQ(got["attachments"].size(), 0U);
    for (const std::string& path : {folder.PathOf("gone.pdf"), pipe, folder.Path()})
        EXPECT_THAT(got["body"].get<std::string>(), HasSubstr("(" + path + " can't be attached: "));
    EXPECT_THAT(got["body"].get<std::string>(), HasSubstr("(" + large + " is too large to be attached.)"));
}

TEST_F(CurlMailSenderTest, MessagesShareAConnectionAndARefusalEndsItsOwn) {
    const TestMailServer server(system, {"--refuse", "nobody@example.org"});
    const auto manager = Open(server.Port());
    MailMessage message = Message();
    EXPECT_TRUE(manager->Send(message));
    EXPECT_TRUE(manager->Send(message));
    EXPECT_EQ(Received(server, 1)["connection"], Received(server, 2)["connection"]);
    message.recipient = "nobody@example.org";
    EXPECT_FALSE(manager->Send(message));
    EXPECT_THAT(manager->FailureText(),
                HasSubstr("the server refuses it (RCPT failed: 550): \"550 5.1.1 There is no such user\""));
    message.recipient = "office@example.org";
    EXPECT_TRUE(manager->Send(message)) << manager->FailureText();
    EXPECT_EQ(Received(server, 3)["recipients"].size(), 1U);
}

TEST_F(CurlMailSenderTest, EncryptsAndLogsIn) {
    for (const bool isAtOnce : {true, false}) {
        std::vector<std::string> options = {"--certificate", Certificate(), "--login", "user:pass word"};
        if (!isAtOnce) options.emplace_back("--starttls");
        const TestMailServer server(system, options);
        m_trusted.clear();
        const auto strange = Open(server.Port(), isAtOnce);
        strange->SetLogin("user", "pass word");
        EXPECT_FALSE(strange->Send(Message()));
        EXPECT_THAT(strange->FailureText(), HasSubstr("certificate is not trusted"));

        m_trusted = Certificate();
        const auto wrong = Open(server.Port(), isAtOnce);
        wrong->SetLogin("user", "wrong");
        EXPECT_FALSE(wrong->Send(Message()));
        EXPECT_THAT(wrong->FailureText(), HasSubstr("refuses the user name or the password"));

        const auto manager = Open(server.Port(), isAtOnce);
        manager->SetLogin("user", "pass word");
        EXPECT_TRUE(manager->Send(Message())) << manager->FailureText();
        const nlohmann::json got = Received(server);
        EXPECT_EQ(got["encrypted"], true);
        EXPECT_EQ(got["login"], true);
    }
}

TEST_F(CurlMailSenderTest, RefusesWhatIsNoServerOrAddress) {
    MailMessage message = Message();
    message.recipient = "a@example.org>\r\nRCPT TO:<b@example.org";
    EXPECT_FALSE(Open(1)->Send(message));
    message = Message();
    message.sender = "";
    const auto manager = Open(1);
    EXPECT_FALSE(manager->Send(message));
    EXPECT_EQ(manager->FailureText(), "\"\" is no sender address");
    for (const char* host : {"", "user@host", "host/path", "a b", "host\r\n"}) {
        manager->SetSmtpHost(host);
        EXPECT_FALSE(manager->Send(Message())) << host;
        EXPECT_THAT(manager->FailureText(), HasSubstr("is no name of a mail server"));
    }
    const auto far = Open(70'000);
    EXPECT_FALSE(far->Send(Message()));
    EXPECT_THAT(far->FailureText(), HasSubstr("is no port"));
    const auto closed = Open(1);
    EXPECT_FALSE(closed->Send(Message()));
    EXPECT_THAT(closed->FailureText(), HasSubstr("can't be reached"));
}

// A mail server that says its part for so many commands and is silent from then on.
class SilentMailServer {
public:
    explicit SilentMailServer(int answers)
        : m_server([answers](int socket) {
              Converse(socket, answers);
              LoopbackServer::Swallow(socket);
          }) {}
    int Port() const { return m_server.Port(); }
    static void Converse(int socket, int answers) {
        for (int i = 0; i < answers; ++i) {
            LoopbackServer::Say(socket, kAnswers.at(static_cast<std::size_t>(i)));
            if (i + 1 < answers) ReadUpTo(socket, i == kDataAnswer ? "\r\n.\r\n" : "\r\n");
        }
    }

    static constexpr std::array<const char*, 7> kAnswers = {
        "220 mail.test\r\n", "250 mail.test\r\n", "250 sender\r\n",    "250 recipient\r\n",
        "354 go on\r\n",     "250 kept\r\n",      "250 still here\r\n"};
    static constexpr int kDataAnswer = 4;
    static constexpr int kAnswersToSend = 6;

private:
    static void ReadUpTo(int socket, const std::string& end) {
        std::string text;
        for (char byte = 0; text.find(end) == std::string::npos && recv(socket, &byte, 1, 0) == 1;)
            text += byte;
    }
    LoopbackServer m_server;
};

TEST_F(CurlMailSenderTest, NoSilenceOfAServerLastsLong) {
    m_limits = {600, 3, 60'000};
    for (int answers = 0; answers <= static_cast<int>(SilentMailServer::kAnswers.size()); ++answers) {
        const SilentMailServer server(answers);
        int ticks = 0;
        system.loop->StartTimer(1, 50, [&ticks] { ++ticks; });
        const long long start = system.loop->MonotonicMilliseconds();
        auto manager = Open(server.Port());
        EXPECT_EQ(manager->Send(Message()), answers >= SilentMailServer::kAnswersToSend) << answers;
        if (answers < SilentMailServer::kAnswersToSend) {
            EXPECT_THAT(manager->FailureText(), HasSubstr("took too long")) << answers;
        }
        manager.reset();
        // Not once more for a farewell that is not answered either.
        EXPECT_LT(system.loop->MonotonicMilliseconds() - start, 2'000 * m_limits.silentSeconds) << answers;
        EXPECT_GT(ticks, 0) << answers;
    }
}

TEST_F(CurlMailSenderTest, StopsWhenTheUserWantsItTo) {
    for (const int answers : {2, SilentMailServer::kDataAnswer + 1}) {
        const SilentMailServer server(answers);
        system.loop->StartTimer(1, 100, [this] { ++m_interrupts; });
        const long long start = system.loop->MonotonicMilliseconds();
        auto manager = Open(server.Port());
        EXPECT_FALSE(manager->Send(Message()));
        EXPECT_EQ(manager->FailureText(), "it was stopped");
        EXPECT_TRUE(manager->WasStopped());
        manager.reset();
        EXPECT_LT(system.loop->MonotonicMilliseconds() - start, 5'000) << answers;
    }
}

TEST_F(CurlMailSenderTest, AMessageThatIsGivenUpIsNeverEnded) {
    std::string received;
    {
        const LoopbackServer server([this, &received](int socket) {
            SilentMailServer::Converse(socket, SilentMailServer::kDataAnswer + 1);
            while (!m_isGivenUp) std::this_thread::sleep_for(std::chrono::milliseconds(10));
            std::array<char, 65536> bytes = {};
            for (ssize_t count = 0; (count = recv(socket, bytes.data(), bytes.size(), 0)) > 0;)
                received.append(bytes.data(), static_cast<std::size_t>(count));
        });
        system.loop->StartTimer(1, 300, [this] { ++m_interrupts; });
        MailMessage message = Message();
        message.body = std::string(15 << 20, 'x');  // more than the connection takes before it is read
        EXPECT_FALSE(Open(server.Port())->Send(message));
        m_isGivenUp = true;
    }
    EXPECT_THAT(received, HasSubstr("Subject: Subject"));
    EXPECT_EQ(received.find("\r\n.\r\n"), std::string::npos);
}

}  // namespace
}  // namespace quirepress
