#include <gmock/gmock.h>

#include <sys/stat.h>

#include <filesystem>

#include "base/text.h"
#include "endtoend/qpr_program.h"
#include "rig/loopback_server.h"

namespace quirepress {
namespace {

using testing::AnyOf;
using testing::StartsWith;
using testing::UnorderedElementsAre;

std::string StatusOf(const nlohmann::json& json, std::size_t row) {
    return json["rows"][row]["columns"][3];
}

// Everything that a list may hold, from the first row to what becomes of the files.
TEST(QprWholeRun, PrintsFilesReportsAndTells) {
    const LoopbackServer server([](int socket) {
        const bool isThere = Contains(LoopbackServer::ReadHead(socket), "GET /there.ps ");
        LoopbackServer::Say(socket, isThere ? "HTTP/1.0 200 OK\r\nContent-Length: 5\r\n\r\nbytes"
                                            : "HTTP/1.0 404 Not Found\r\nContent-Length: 0\r\n\r\n");
    });
    QprProgram qpr;
    const std::string text = qpr.m_work.Write("a;b $(touch x).txt", "text");
    const std::string office = qpr.m_work.Write("c.rtf", "no rich text at all");
    const std::string script =
        qpr.m_work.Write("d.bat", "#!/bin/sh\necho \"$1\" > \"" + qpr.m_work.PathOf("ran") + "\"\n");
    chmod(script.c_str(), 0755);
    ASSERT_EQ(qpr.Run({"settings", "set", "general", "GENERATEREPORTS"}).exitCode, 0);
    ASSERT_EQ(qpr.Run({"settings", "set", "general", "ERRORLOG"}).exitCode, 0);

    const ProgramResult run = qpr.Run(
        {"--json", "print", "--copies", "2", "--move-to", qpr.m_work.PathOf("done"), "--move-to-on-error",
         qpr.m_work.PathOf("failed"), "--processing-params", "'one word'", text, office, script,
         "DL;http://" + server.Address() + "/there.ps", "http://" + server.Address() + "/away.ps"});
    EXPECT_EQ(run.exitCode, 1) << run.errors;
    const nlohmann::json json = run.Json();
    EXPECT_EQ(json["done"], 3);
    EXPECT_EQ(json["failed"], 2);
    EXPECT_EQ(StatusOf(json, 0), "Done");
    // The second where no office program is installed.
    EXPECT_THAT(StatusOf(json, 1), AnyOf("Error - Can't Print - the file is not what its name says",
                                         StartsWith("Problem with print association setup")));
    EXPECT_EQ(StatusOf(json, 2), "Done");
    EXPECT_EQ(StatusOf(json, 3), "Done");
    EXPECT_EQ(StatusOf(json, 4), "Unable to download web file");
    EXPECT_EQ(qpr.OutputNames().size(), 4U);  // two documents, twice

    EXPECT_EQ(qpr.m_work.Read("done/a;b $(touch x).txt"), "text");
    EXPECT_EQ(qpr.m_work.Read("done/there.ps"), "bytes");
    EXPECT_EQ(qpr.m_work.Read("failed/c.rtf"), "no rich text at all");
    EXPECT_EQ(qpr.m_work.Read("ran"), "one word\n");
    EXPECT_FALSE(qpr.m_work.Has("x"));
    EXPECT_TRUE(qpr.m_work.Has("d.bat"));
    EXPECT_EQ(qpr.Run({"--json", "log", "show", "print"}).Json()["records"].size(), 4U);
    EXPECT_EQ(qpr.Run({"--json", "log", "show", "error"}).Json()["records"].size(), 4U);
    std::vector<std::string> endings;
    for (const auto& entry : std::filesystem::directory_iterator(qpr.m_home.PathOf("Reports")))
        endings.push_back(entry.path().extension());
    EXPECT_THAT(endings, UnorderedElementsAre(".csv", ".txt"));
}

}  // namespace
}  // namespace quirepress
