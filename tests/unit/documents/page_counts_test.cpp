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

using namespace std::string_literals;

// "~" stands for the escape character.
std::string Pcl(std::string text) {
    for (char& c : text)
        if (c == '~') c = '\x1B';
    return text;
}

int Count(const std::string& bytes) {
    MemoryFile file(bytes);
    return CountPclPages(file);
}

const std::string kExit = Pcl("~%-12345X");
const std::string kHostile = "\f~E\f~%-12345X\f~*b9W"s;  // in binary data, none of it counts
const std::string kXlHeader = ") HP-PCL XL;2;1;Comment\n";
const std::string kXlPage = "\xC1\x00\x00\xF8\x2A\x43\xD1\x01\x00\x02\x00\xF8\x4C\x44"s;

TEST(PclPages, CountsFormFeedsAndWhatResetsPrint) {
    EXPECT_EQ(Count(Pcl("~Eone\ftwo\f~E")), 2);
    EXPECT_EQ(Count(Pcl("~Eone\ftwo~E")), 2);
    EXPECT_EQ(Count(Pcl("~Eone\ftwo")), 2) << "the last page holds marks";
    EXPECT_EQ(Count(Pcl("~E~&l2A~(10U  \r\n~E~E")), 0) << "blanks leave no mark";
    EXPECT_EQ(Count(Pcl("~E\f\f")), 2) << "a form feed ejects an empty page, too";
    EXPECT_EQ(Count("plain text\r\n\x1A"), 1);
    EXPECT_EQ(Count("a\fb\fc\f"), 3);
    EXPECT_EQ(Count(""), 0);
}

TEST(PclPages, PageSetUpPrintsWhatIsOnThePage) {
    EXPECT_EQ(Count(Pcl("~Eone~&l1Otwo~E")), 2);
    EXPECT_EQ(Count(Pcl("~E~&l1o2A~&l1Sone~&l6d3Etwo~E")), 1) << "line spacing and margins do not";
    EXPECT_EQ(Count(Pcl("~Efront~&a2Gback~&a10Lmore~E")), 2);
}

TEST(PclPages, BinaryDataIsNoText) {
    const std::string length = std::to_string(Pcl(kHostile).size());
    for (const std::string command : {"~*b#W", "~*b#V", "~*b3m#W", "~(s#W", "~)s#W", "~(f#W", "~&p#X",
                                      "~*c#W", "~*v#W", "~*m#W", "~*g#W", "~*b+#W", "~*b#.5W", "~*b#w"}) {
        std::string bytes = "~E" + command;
        bytes.replace(bytes.find('#'), 1, length);
        bytes = Pcl(bytes + kHostile + "text\f~E");
        EXPECT_EQ(Count(bytes), 1) << command;
    }
    EXPECT_EQ(Count(Pcl("~E~&k2W\f\f~E")), 2) << "a switch, not a length";
    EXPECT_EQ(Count(Pcl("~E~*c300V\f\f~E")), 2) << "the height of a rule";
    EXPECT_EQ(Count(Pcl("~E~*b-5W\f~E")), 1);
    EXPECT_EQ(Count(Pcl("~E~*b99999999999999999999W\f\f\f")), 1) << "data up to the end";
}

TEST(PclPages, GraphicsLeaveMarks) {
    EXPECT_EQ(Count(Pcl("~E~*b3Wabc~E")), 1);
    EXPECT_EQ(Count(Pcl("~E~*b0W~*rB~E")), 0);
    EXPECT_EQ(Count(Pcl("~E~*c100a200b0P~E")), 1) << "a filled rectangle";
    EXPECT_EQ(Count(Pcl("~E~(s3Wabc~E")), 0) << "a font's character prints nothing yet";
    EXPECT_EQ(Count(Pcl("~E~&p1X\f~E")), 1) << "a form feed printed as a sign";
}

TEST(PclPages, PlotterLanguageWithinAPage) {
    EXPECT_EQ(Count(Pcl("~E~%0BIN;SP1;PA10,10;~%0A~E")), 0) << "the pen is up";
    EXPECT_EQ(Count(Pcl("~E~%0BIN;SP1PU10,10pd20,20;~%0A~E")), 1);
    EXPECT_EQ(Count(Pcl("~E~%1BLBone\ftwo\3;\f\f~%1A\f~E")), 1) << "form feeds end no page there";
    EXPECT_EQ(Count(Pcl("~E~%0BPE<=\xBF\xC0PG;PG;~E")), 1) << "a reset leads back";
    EXPECT_EQ(Count(Pcl("~E~%0BDT*;LBa\3PD*PU;CO\"PD\";~%0A~E~%0BCO\"PD\";~%0A")), 1);
    EXPECT_EQ(Count(kExit + "@PJL ENTER LANGUAGE=HPGL2\r\nIN;PD1,1;PG;PD2,2;PG;" + kExit), 2);
}

TEST(PclPages, MacrosPrintWhenTheyAreCalled) {
    EXPECT_EQ(Count(Pcl("~E~&f1Y~&f0Xstored\f\f~&f1X~E")), 0);
    EXPECT_EQ(Count(Pcl("~E~&f1Y~&f0Xstored~&f1X~&f1y2X~E")), 1);
}

TEST(PclPages, DisplayFunctionsPrintControlCharacters) {
    EXPECT_EQ(Count(Pcl("~E~Y\f~E~&l1O\f~Z\fx~E")), 2);
}

TEST(PclPages, FragmentsOfCommandsAreHarmless) {
    EXPECT_EQ(Count(Pcl("~Ea~~E")), 1);
    EXPECT_EQ(Count(Pcl("~Ea\f~&l\fb")), 3) << "a command broken off";
    for (const char* end : {"~", "~*", "~*b", "~*b5", "~*b5W", "~*b5Wxx", "~%-1234", "~&l1"})
        EXPECT_EQ(Count(Pcl("~E\f"s + end)), end == "~*b5W"s || end == "~*b5Wxx"s ? 2 : 1) << end;
}

TEST(PclPages, JobCommandsAndLanguageSwitches) {
    const std::string pjl = kExit + "@PJL JOB NAME=\"a\fb\"\r\n@PJL SET COPIES=3\r\n";
    EXPECT_EQ(Count(pjl + "@PJL ENTER LANGUAGE = PCL \r\n" + Pcl("~Ex\f~E") + kExit + "@PJL EOJ\r\n" + kExit),
              1);
    EXPECT_EQ(Count(pjl + "@PJL enter language=pclxl\n" + kXlHeader + kXlPage + kXlPage + kExit), 2);
    EXPECT_EQ(Count(pjl + "@PJL ENTER LANGUAGE=POSTSCRIPT\n%!PS\n\f\f(x) show showpage\n" + kExit +
                    Pcl("~Ex~E") + kExit),
              1);
    EXPECT_EQ(Count(pjl + kXlHeader + kXlPage + kExit + kExit + Pcl("~Ex\fy") + kExit + kXlHeader + kXlPage),
              4)
        << "told by the first bytes";
    EXPECT_EQ(Count(kExit + "%!PS\n\f\f" + kExit), 0);
    EXPECT_EQ(Count(Pcl("~Etext") + kExit + "@PJL EOJ" + kExit), 1) << "the exit resets";
    EXPECT_EQ(Count(kExit + "@PJL FSDOWNLOAD FORMAT:BINARY SIZE=4 NAME=\"0:\\f\"\r\n\f\f\f\f" +
                    "@PJL ENTER LANGUAGE=PCL\r\n\f" + kExit),
              1);
}

TEST(PclPages, PclXlInBothByteOrders) {
    // A byte array of 3, an embedded block of 4 and one of 2, each full of page ends.
    const std::string little =
        "\xC8\xC1\x03\x00\x44\x44\x44\xFA\x04\x00\x00\x00\x44\x44\x44\x44\xFB\x02\x44\x44"s;
    const std::string big =
        "\xC8\xC1\x00\x03\x44\x44\x44\xFA\x00\x00\x00\x04\x44\x44\x44\x44\xFB\x02\x44\x44"s;
    const std::string values =
        "\xC0\x44\xC2\x44\x44\x44\x44\xD5\x44\x44\x44\x44\x44\x44\x44\x44\xE1\x44\x44"
        "\x44\x44\x44\x44\x44\x44\xF8\x44\xF9\x44\x44 \x00"s;
    EXPECT_EQ(Count(kXlHeader + values + little + "\x44" + values + "\x44\x42"), 2);
    EXPECT_EQ(Count("( HP-PCL XL;3;0\n" + values + big + "\x44"), 1);
    EXPECT_EQ(Count(kXlHeader + "\x44\x01\x44\x44" + kExit + Pcl("~Ex")), 2)
        << "what is none ends the stream";
    EXPECT_EQ(Count(kXlHeader + "\x44\xFA\xFF\xFF\xFF\xFF\x44"), 1);
    EXPECT_EQ(Count(") HP-PCL XL;"), 0);
}

TEST(PclPages, OtherKindsOfFilesHoldNone) {
    EXPECT_EQ(Count("%PDF-1.4\n%\xE2\xE3\n\f\f"), 0);
    EXPECT_EQ(Count("PK\x03\x04\x14\f\f~E"), 0);
    EXPECT_EQ(Count("\xFF\xFEt\0e\0x\0t\0\f\0"s), 0);
    EXPECT_EQ(Count("%!PS\n%%Pages: 3\n"), 0);
    EXPECT_EQ(Count(std::string(10000, '\0')), 0);
    EXPECT_EQ(Count("\0\0\0"s + Pcl("~Ex\f")), 1) << "some drivers send these first";
}

TEST(PclPages, JumpsOverLongDataAndJoinsBlocks) {
    std::string bytes = Pcl("~E");
    for (int page = 0; page < 40; ++page) {
        bytes += Pcl("~*b30000W") + std::string(30000, '\f') + "text" + std::string(page % 7, ' ') + "\f";
        bytes += Pcl("~(s20W") + std::string(20, '\x1B');
    }
    MemoryFile file(bytes);
    EXPECT_EQ(CountPclPages(file), 40);
    const std::string text(300000, 'x');
    EXPECT_EQ(Count(text + "\f" + text + Pcl("~E") + text), 3);
    EXPECT_EQ(Count(text.substr(0, 128 * 1024 - 4) + kExit + text), 2) << "an exit across two blocks";

    MemoryFile long_(Pcl("~E~*b4000000W") + std::string(4000000, 'x') + Pcl("~E"));
    EXPECT_EQ(CountPclPages(long_), 1);
    EXPECT_LT(long_.BytesRead(), 300000);
}

int CountPs(const std::string& bytes) {
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
    EXPECT_EQ(CountPs(kHeader + "%%Pages: 12\n"), 12);
    EXPECT_EQ(CountPs(kHeader + "%%Pages:7 1\n"), 7);
    EXPECT_EQ(CountPs(kHeader + "%%Pages: 3\n%%Pages: 4\n"), 4) << "a later comment counts";
    EXPECT_EQ(CountPs(kHeader + "showpage\n"), 0);
    EXPECT_EQ(CountPs("%!\n%%Pages: 12\n"), 0);
    EXPECT_EQ(CountPs(""), 0);
    const std::string body(5000, 'x');
    EXPECT_EQ(CountPs(kHeader + "%%Pages: (atend)\n" + body + "\n%%Trailer\n%%Pages: 12\n%%EOF\n"), 12);
    EXPECT_EQ(CountPs(kHeader + "%%Pages: 5\n%%Pages: (atend)\n" + body), 5) << "nothing in the trailer";
    EXPECT_EQ(CountPs(kHeader + body + "%%Pages: 9\n"), 0) << "beyond the header";
    EXPECT_EQ(CountPs(kHeader + "%%Pages: (atend)\n" + body + "%%Pages: 9\n" + std::string(60, 'x')), 0)
        << "before the trailer";
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
        ASSERT_EQ(CountPs(bytes), CountSlowly(bytes)) << "round " << round << ": " << bytes;
    }
}

TEST(PostScriptPages, ReadsTwoShortPartsOfALongFile) {
    MemoryFile file(kHeader + "%%Pages: (atend)\n" + std::string(1 << 20, 'x') + "\n%%Pages: 12\n%%EOF\n");
    EXPECT_EQ(CountPostScriptPages(file), 12);
    EXPECT_LE(file.BytesRead(), 4200);
}

TEST(PageCounts, WhatCannotBeReadSaysNo) {
    const TemporaryFolder folder;
    const Services services = MakeSystemServices();
    for (const auto count :
         {static_cast<int (*)(Files&, std::string_view, std::string&)>(CountPclPages),
          static_cast<int (*)(Files&, std::string_view, std::string&)>(CountPostScriptPages)}) {
        for (const std::string& path : {folder.PathOf("missing.ps"), folder.Path()}) {
            std::string status = "as it was";
            EXPECT_EQ(count(*services.files, path, status), -1) << path;
            EXPECT_EQ(status, "No") << path;
        }
        std::string status;
        EXPECT_EQ(count(*services.files, "", status), -1);
    }
    std::string status = "as it was";
    EXPECT_EQ(CountPclPages(*services.files, folder.Write("a.pcl", Pcl("~Ex\fy")), status), 2);
    EXPECT_EQ(CountPostScriptPages(*services.files, folder.Write("a.ps", "no"), status), 0);
    EXPECT_EQ(status, "as it was");
    MemoryFile broken(std::string(1 << 20, 'x'));
    broken.FailAt(500000);
    EXPECT_EQ(CountPclPages(broken), -1);
    MemoryFile brokenPs(kHeader + "%%Pages: (atend)" + std::string(9000, 'x'));
    brokenPs.FailAt(8000);
    EXPECT_EQ(CountPostScriptPages(brokenPs), -1);
}

}  // namespace
}  // namespace quirepress
