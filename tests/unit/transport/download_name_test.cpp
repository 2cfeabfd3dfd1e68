#include "transport/download_name.h"

#include <gtest/gtest.h>

namespace quirepress {
namespace {

TEST(DownloadNameTest, TheServersNameGoesFirst) {
    const auto name = [](std::string_view disposition) {
        return NameDownload({"http://host/path/from-address.txt", disposition, ""});
    };
    EXPECT_EQ(name("attachment; filename=plain.pdf"), "plain.pdf");
    EXPECT_EQ(name("attachment;FileName = \"with ; and \\\"quotes\\\".pdf\" ; size=3"),
              "with ; and _quotes_.pdf");
    EXPECT_EQ(name("attachment; filename=\"x.pdf\"; filename*=UTF-8''caf%c3%a9%20%E2%82%AC.pdf"),
              "caf\xC3\xA9 \xE2\x82\xAC.pdf");
    EXPECT_EQ(name("attachment; filename*=iso-8859-1'en'caf%E9.pdf"), "caf\xC3\xA9.pdf");
    EXPECT_EQ(name("filename=no-kind.pdf"), "from-address.txt");
    for (const std::string_view none : {"", "inline", "attachment; filename",
                                        "attachment; filename=", "; ; =", "attachment; filename*=broken",
                                        "a; filename=\"", "a; filename=\"..\""})
        EXPECT_EQ(name(none), "from-address.txt") << none;
}

TEST(DownloadNameTest, NoNameLeavesItsFolder) {
    const auto name = [](std::string_view disposition) { return NameDownload({"", disposition, ""}); };
    EXPECT_EQ(name("a; filename=\"../../etc/passwd\""), "download");
    EXPECT_EQ(name("a; filename=/etc/passwd"), "passwd");
    EXPECT_EQ(name("a; filename=\"C:\\\\Windows\\\\a.pdf\""), "a.pdf");
    EXPECT_EQ(name("a; filename*=UTF-8''..%2F..%2Fa.pdf"), "download");
    EXPECT_EQ(name("a; filename*=UTF-8''a%00b%0D%0A.pdf"), "a_b__.pdf");
    EXPECT_EQ(name("a; filename=.bashrc"), "_bashrc");
    EXPECT_EQ(name("a; filename=CON.pdf"), "_CON.pdf");
    EXPECT_LE(name("a; filename=" + std::string(5000, 'x') + ".pdf").size(), 200U);
}

TEST(DownloadNameTest, AddressesGiveANameToo) {
    const auto name = [](std::string_view address) { return NameDownload({address, "", ""}); };
    EXPECT_EQ(name("http://host/a/b%20c.pdf?x=/d#/e"), "b c.pdf");
    EXPECT_EQ(name("ftp://user@host/dir/label%3f.zpl;type=i"), "label_.zpl");
    EXPECT_EQ(name("ftp://host/a?b#c.zpl"), "a_b#c.zpl");
    EXPECT_EQ(name("http://host/%2e%2e"), "download");
    EXPECT_EQ(name("http://host/a%2F..%2Fb.pdf"), "download");
    EXPECT_EQ(name("http://host"), "download");
}

TEST(DownloadNameTest, WhatItIsDecidesTheExtension) {
    const auto name = [](std::string_view path, std::string_view type) {
        return NameDownload({"http://host/" + std::string(path), "", type});
    };
    EXPECT_EQ(name("report", "application/pdf"), "report.pdf");
    EXPECT_EQ(name("get.php?id=3", "Application/PDF ; charset=x"), "get.php.pdf");
    EXPECT_EQ(name("", "text/html; charset=utf-8"), "download.html");
    EXPECT_EQ(name("a.prn", "text/plain"), "a.prn");
    EXPECT_EQ(name("report", "application/unheard-of"), "report");
}

}  // namespace
}  // namespace quirepress
