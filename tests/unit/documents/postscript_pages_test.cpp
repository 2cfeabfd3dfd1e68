#include <gtest/gtest.h>

#include <random>
#include <string>

#include "base/numbers.h"
#include "documents/page_counts.h"
#include "fakes/memory_file.h"
#include "fakes/temporary_folder.h"
#include "platform/files.h"
#include "platform/services.h"

namespace quirepress {
namespace {

int Count(const std::string& bytes) {
    MemoryFile file(bytes);
    return CountPostScriptPages(file);
}

// The rule offset by offset, one slice of 20 bytes at each.
int CountSlowly(const std::string& bytes) {
    if (bytes.compare(0, 4, "%!PS") != 0) return 0;
    int pages = 0;
    bool atEnd = false;
    const auto size = static_cast<long long>(bytes.size());
    for (long long p = 0; p < size;) {
        std::string slice = bytes.substr(p, 20);
        slice.resize(20, '\0');
        long long next = p + 1;
        if (slice.compare(0, 16, "%%Pages: (atend)") == 0) {
            atEnd = true;
            if (size > 60 && p < size - 60) next = size - 60;
        } else if (slice.compare(0, 8, "%%Pages:") == 0) {
            pages = ParseLong(slice.substr(8));
        }
        if (!atEnd && p == 4097) break;
        p = next;
    }
    return pages;
}

const std::string kHeader = "%!PS-Adobe-3.0\n";

TEST(PostScriptPages, ReadsTheHeaderOrTheTrailer) {
    EXPECT_EQ(Count(kHeader + "%%Pages: 12\n"), 12);
    EXPECT_EQ(Count(kHeader + "%%Pages:7 1\n"), 7);
    EXPECT_EQ(Count(kHeader + "%%Pages: 3\n%%Pages: 4\n"), 4) << "a later comment counts";
    EXPECT_EQ(Count(kHeader + "showpage\n"), 0);
    EXPECT_EQ(Count("%!\n%%Pages: 12\n"), 0);
    EXPECT_EQ(Count(""), 0);
    const std::string body(5000, 'x');
    EXPECT_EQ(Count(kHeader + "%%Pages: (atend)\n" + body + "\n%%Trailer\n%%Pages: 12\n%%EOF\n"), 12);
    EXPECT_EQ(Count(kHeader + "%%Pages: 5\n%%Pages: (atend)\n" + body), 5) << "nothing in the trailer";
    EXPECT_EQ(Count(kHeader + body + "%%Pages: 9\n"), 0) << "beyond the header";
    EXPECT_EQ(Count(kHeader + "%%Pages: (atend)\n" + body + "%%Pages: 9\n" + std::string(60, 'x')), 0)
        << "before the trailer";
}

TEST(PostScriptPages, HeaderEndsAfterOffset4097) {
    const auto at = [](std::size_t offset, const std::string& comment) {
        std::string bytes = kHeader;
        bytes.resize(offset, ' ');
        return bytes + comment + std::string(9000, 'x');
    };
    EXPECT_EQ(Count(at(4097, "%%Pages: 123456789 ")), 123456789);
    EXPECT_EQ(Count(at(4098, "%%Pages: 12 ")), 0);
}

TEST(PostScriptPages, AgreesWithTheRuleOffsetByOffset) {
    std::mt19937 random(7);
    const std::string pieces[] = {
        "%%Pages: (atend)", "%%Pages:", "%%Pages: 7 ", "%%Pages: 31\n", "%",
        "%%Pages: (aten",   "\n",       "x",           "123",           std::string(1, '\0')};
    for (int round = 0; round < 4000; ++round) {
        std::string bytes = "%!PS";
        const std::size_t filling = round % 4 == 0 ? 4000 + random() % 300 : random() % 90;
        if (random() % 2 == 0) bytes.append(filling, '.');
        for (std::size_t left = random() % 12; left > 0; --left)
            bytes += pieces[random() % std::size(pieces)];
        if (random() % 2 == 0) bytes.append(filling, '.');
        for (std::size_t left = random() % 6; left > 0; --left) bytes += pieces[random() % std::size(pieces)];
        ASSERT_EQ(Count(bytes), CountSlowly(bytes)) << "round " << round << ": " << bytes;
    }
}

TEST(PostScriptPages, ReadsTwoShortPartsOfALongFile) {
    MemoryFile file(kHeader + "%%Pages: (atend)\n" + std::string(1 << 20, 'x') + "\n%%Pages: 12\n%%EOF\n");
    EXPECT_EQ(CountPostScriptPages(file), 12);
    EXPECT_LE(file.BytesRead(), 4200);
}

TEST(PostScriptPages, WhatCannotBeReadSaysNo) {
    const TemporaryFolder folder;
    const Services services = MakeSystemServices();
    for (const std::string& path : {folder.PathOf("missing.ps"), folder.Path()}) {
        std::string status = "as it was";
        EXPECT_EQ(CountPostScriptPages(*services.files, path, status), -1) << path;
        EXPECT_EQ(status, "No") << path;
    }
    std::string status = "as it was";
    EXPECT_EQ(CountPostScriptPages(*services.files, "", status), -1);
    EXPECT_EQ(CountPostScriptPages(*services.files, folder.Write("a.ps", "no"), status), 0);
    EXPECT_EQ(CountPostScriptPages(*services.files, folder.Write("b.ps", kHeader + "%%Pages: 2"), status), 2);
    EXPECT_EQ(status, "as it was");

    MemoryFile broken(kHeader + "%%Pages: (atend)" + std::string(9000, 'x'));
    broken.FailAt(8000);
    EXPECT_EQ(CountPostScriptPages(broken), -1);
}

}  // namespace
}  // namespace quirepress
