#include "transport/download.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "fakes/surroundings.h"
#include "platform/event_loop.h"
#include "rig/loopback_server.h"
#include "rig/python_server.h"

namespace quirepress {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class DownloadTest : public testing::Test, protected Surroundings {
protected:
    DownloadResult Fetch(const std::string& address) {
        DownloadRequest request;
        request.address = address;
        request.folder = folder.PathOf("in/coming");
        request.limits = {5'000, m_silentSeconds, 30'000};
        request.largestFile = m_largestFile;
        request.keepGoing = [this] { return m_keepsGoing; };
        request.showBytes = [this](std::int64_t done, std::int64_t total) {
            m_done = done;
            m_total = total;
        };
        return FetchDownload(files, {*system.loop, {}}, request);
    }
    // From a server that answers each request so.
    DownloadResult FetchFrom(const std::string& answer) {
        const LoopbackServer server([&answer](int socket) {
            LoopbackServer::ReadHead(socket);
            LoopbackServer::Say(socket, answer);
        });
        return Fetch("http://" + server.Address() + "/file.pdf");
    }
    // The names of what lies in the folder, however it came there.
    std::vector<std::string> Names() {
        std::vector<std::string> names;
        if (!folder.Has("in/coming")) return names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.PathOf("in/coming")))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }
    std::string Read(const std::string& name) { return folder.Read("in/coming/" + name); }

    std::int64_t m_largestFile = 1 << 20;
    int m_silentSeconds = 5;
    bool m_keepsGoing = true;
    std::int64_t m_done = 0;
    std::int64_t m_total = 0;
};

TEST_F(DownloadTest, FetchesByHttp) {
    const PythonServer server(system, "file_server.py", {"http", folder.Path()});
    const std::string bytes(700'000, 'q');
    folder.Write("price list.pdf", bytes);
    folder.Write("empty.txt", "");
    const std::string address = "http://" + server.Address() + "/";
    DownloadResult result = Fetch(address + "price list.pdf");
    EXPECT_EQ(result.end, TransferEnd::kDone) << result.failure;
    EXPECT_EQ(result.path, folder.PathOf("in/coming/price list.pdf"));
    EXPECT_EQ(Read("price list.pdf"), bytes);
    EXPECT_EQ(m_done, 700'000);
    EXPECT_EQ(m_total, 700'000);
    EXPECT_EQ(Fetch(address + "price%20list.pdf?a=b").path, folder.PathOf("in/coming/price list_2.pdf"));
    EXPECT_EQ(Fetch(address + "empty.txt").end, TransferEnd::kDone);
    EXPECT_THAT(Names(), ElementsAre("empty.txt", "price list.pdf", "price list_2.pdf"));
    result = Fetch(address + "missing.pdf");
    EXPECT_EQ(result.end, TransferEnd::kFailed);
    EXPECT_THAT(result.failure, HasSubstr("404"));
    EXPECT_EQ(Names().size(), 3U);
}

TEST_F(DownloadTest, FetchesByFtp) {
    const PythonServer server(system, "file_server.py", {"ftp", folder.Path()});
    folder.Write("labels/a b.zpl", "^XA^XZ");
    const std::string host = server.Address();
    EXPECT_EQ(Fetch("ftp://" + host + "/labels/a b.zpl").failure, "");
    EXPECT_EQ(Fetch("FTP://user:secret@" + host + "/labels/a%20b.zpl;type=i").failure, "");
    EXPECT_THAT(Names(), ElementsAre("a b.zpl", "a b_2.zpl"));
    EXPECT_EQ(Read("a b_2.zpl"), "^XA^XZ");
    EXPECT_THAT(Fetch("ftp://user:wrong@" + host + "/labels/a%20b.zpl").failure,
                HasSubstr("refuses the user name or the password"));
    EXPECT_THAT(Fetch("ftp://" + host + "/labels/none.zpl").failure, HasSubstr("no such file"));
    EXPECT_EQ(Fetch("ftp://" + host + "/labels/").failure, "the address names a folder");
    EXPECT_EQ(Names().size(), 2U);
}

TEST_F(DownloadTest, TakesTheNameThatTheServerGives) {
    const auto result = FetchFrom(
        "HTTP/1.0 200 OK\r\ncontent-disposition: attachment; filename=\"dir/report.pdf\"\r\n\r\nbytes");
    EXPECT_EQ(result.path, folder.PathOf("in/coming/report.pdf")) << result.failure;
    EXPECT_EQ(Read("report.pdf"), "bytes");
}

TEST_F(DownloadTest, OnlyWholeFilesComeToBe) {
    EXPECT_THAT(FetchFrom("HTTP/1.0 200 OK\r\nContent-Length: 100\r\n\r\nhalf").failure,
                HasSubstr("before everything had come"));
    EXPECT_THAT(FetchFrom("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nhalf\r\n").failure,
                HasSubstr("before everything had come"));
    EXPECT_THAT(FetchFrom("").failure, HasSubstr("without an answer"));
    EXPECT_EQ(FetchFrom("\x01\x02garbage\r\n\r\n").end, TransferEnd::kFailed);
    m_largestFile = 10;
    EXPECT_THAT(FetchFrom("HTTP/1.0 200 OK\r\nContent-Length: 11\r\n\r\n12345678901").failure,
                HasSubstr("larger than allowed"));
    EXPECT_EQ(FetchFrom("HTTP/1.0 200 OK\r\n\r\n12345678901").failure, "the file is larger than allowed");
    files.FillDiskAfter(3);
    EXPECT_THAT(FetchFrom("HTTP/1.0 200 OK\r\n\r\n12345").failure, HasSubstr("no space is left"));
    files.Heal();
    EXPECT_THAT(Names(), IsEmpty());
    EXPECT_EQ(FetchFrom("HTTP/1.0 200 OK\r\n\r\n1234567890").failure, "");
    EXPECT_THAT(Names(), ElementsAre("file.pdf"));
}

TEST_F(DownloadTest, GoesOnlyWhereItMay) {
    for (const char* address : {"", "host/file.pdf", "file:///etc/passwd", "gopher://host/1", "smtp://host",
                                "scp://host/x", "javascript:x", "://x"})
        EXPECT_EQ(Fetch(address).failure, "an address begins with http://, https:// or ftp://") << address;
    for (const std::string& address :
         {std::string("http://"), std::string("http://a b/"), std::string("http://h\0/x", 11),
          std::string("http://h/\r\nX: y"), "http://" + std::string(70'000, 'a') + "\x01"})
        EXPECT_EQ(Fetch(address).end, TransferEnd::kFailed) << address.substr(0, 40);
    for (const char* target : {"file:///etc/passwd", "ftp://127.0.0.1/x", "gopher://127.0.0.1/"})
        EXPECT_THAT(FetchFrom(std::string("HTTP/1.0 302 Found\r\nLocation: ") + target + "\r\n\r\n").failure,
                    HasSubstr("no way to reach"))
            << target;
    EXPECT_THAT(FetchFrom("HTTP/1.0 302 Found\r\nLocation: /file.pdf\r\n\r\n").failure,
                HasSubstr("without end"));
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(DownloadTest, SilenceAndTheUserEndIt) {
    const LoopbackServer server([](int socket) {
        LoopbackServer::Say(socket, "HTTP/1.0 200 OK\r\nContent-Length: 100\r\n\r\nhalf");
        LoopbackServer::Swallow(socket);
    });
    const std::string address = "http://" + server.Address() + "/file.pdf";
    m_silentSeconds = 1;
    EXPECT_THAT(Fetch(address).failure, HasSubstr("took too long"));
    m_silentSeconds = 60;
    system.loop->StartTimer(1, 200, [this] { m_keepsGoing = false; });
    EXPECT_EQ(Fetch(address).end, TransferEnd::kStopped);
    EXPECT_THAT(Names(), IsEmpty());
}

}  // namespace
}  // namespace quirepress
