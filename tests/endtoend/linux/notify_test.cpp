#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "platform/event_loop.h"
#include "qpr_program.h"
#include "rig/loopback_server.h"
#include "rig/python_server.h"

namespace quirepress {
namespace {

using ::testing::HasSubstr;

class QprNotify : public testing::Test {
protected:
    void Set(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"settings", "set", "email"});
        EXPECT_EQ(m_qpr.Run(std::move(arguments)).exitCode, 0);
    }
    QprProgram m_qpr;
};

TEST_F(QprNotify, MailsWhatItIsToldTo) {
    const TestMailServer server(m_qpr.m_services, {"--refuse", "nobody@example.org"});
    ProgramResult result = m_qpr.Run({"--json", "notify", "5", "text"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.Json()["result"], 0);
    EXPECT_EQ(m_qpr.Run({"notify", "--test"}).exitCode, 1);

    Set({"EMAILTO", "one@example.org", "two@example.org"});
    Set({"EMAILFROM", "qpr@example.org"});
    Set({"SMTP", "localhost:" + std::to_string(server.Port())});
    Set({"JOBATTACH"});
    result = m_qpr.Run({"notify", "4", "off"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.output, HasSubstr("Nothing was sent"));
    EXPECT_EQ(server.Message(1), "");
    result = m_qpr.Run({"notify", "5", "All done", "--attach", m_qpr.m_work.Write("list.txt", "a, b")});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(result.output, "Sent to 2 recipient(s).\n");
    const nlohmann::json message = nlohmann::json::parse(server.Message(2));
    EXPECT_EQ(message["subject"], "Quirepress Prints Finished");
    EXPECT_EQ(message["to"], "two@example.org");
    EXPECT_EQ(message["attachments"][0]["name"], "list.txt");

    Set({"EMAILTO", "nobody@example.org", "two@example.org"});
    result = m_qpr.Run({"--unattended", "notify", "5", "text"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors, HasSubstr("There is no such user"));
    EXPECT_THAT(m_qpr.m_home.Read("error.log"), HasSubstr("Email not sent: "));
    EXPECT_EQ(server.Message(3), "");
    result = m_qpr.Run({"notify", "--test"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors, HasSubstr("Error in configuration, message not sent to: nobody@example.org"));
    EXPECT_THAT(result.errors, HasSubstr("Message(s) Sent Successfully."));
    EXPECT_EQ(nlohmann::json::parse(server.Message(3))["body"], "This is a test message\n");
}

TEST_F(QprNotify, CtrlCEndsTheWaitForASilentServerOnceAndForAll) {
    const LoopbackServer server(LoopbackServer::Swallow);
    Set({"EMAILTO", "one@example.org"});
    Set({"EMAILFROM", "qpr@example.org"});
    Set({"SMTP", server.Address()});
    Set({"ERROR"});
    Set({"JOB"});
    const auto program = m_qpr.Start({"--home", m_qpr.m_home.Path(), "--spooler", "embedded", "--unattended",
                                      "print", "gone.ps", "away.ps", "lost.ps"});
    ASSERT_TRUE(program);
    EventLoop& loop = *m_qpr.m_services.loop;
    while (program->IsRunning() && server.Connections() == 0) loop.Wait(10);
    ASSERT_EQ(kill(static_cast<pid_t>(program->Id()), SIGINT), 0);
    EXPECT_EQ(m_qpr.Finish(*program).exitCode, 130);
    EXPECT_EQ(server.Connections(), 1) << "another message has waited";
    const std::string errors = m_qpr.m_home.Read("error.log");
    EXPECT_THAT(errors, HasSubstr("Email not sent: it was stopped"));
    EXPECT_THAT(errors, HasSubstr("2 earlier message(s) not sent"));
}

TEST_F(QprNotify, WantsAKindAndATextOrATest) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"notify"},
                                                      {"notify", "4"},
                                                      {"notify", "7", "x"},
                                                      {"notify", "0", "x"},
                                                      {"notify", "x", "x"},
                                                      {"notify", "4", "x", "--test"},
                                                      {"download", "http://127.0.0.1/"}})
        EXPECT_EQ(m_qpr.Run(arguments).exitCode, 2) << arguments.back();
}

TEST_F(QprNotify, FetchesFiles) {
    const PythonServer server(m_qpr.m_services, "file_server.py", {"http", m_qpr.m_work.Path()});
    m_qpr.m_work.Write("a.pdf", "%PDF-");
    const std::string folder = m_qpr.m_work.PathOf("in");
    ProgramResult result = m_qpr.Run({"download", "http://" + server.Address() + "/a.pdf", folder});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(result.output, folder + "/a.pdf\n");
    EXPECT_EQ(m_qpr.m_work.Read("in/a.pdf"), "%PDF-");
    result = m_qpr.Run({"--json", "download", "http://" + server.Address() + "/b.pdf", folder});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.Json()["message"].get<std::string>(), HasSubstr("404"));
}

}  // namespace
}  // namespace quirepress
