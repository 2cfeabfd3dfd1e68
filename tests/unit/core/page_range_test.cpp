#include "core/page_range.h"

#include <gtest/gtest.h>

namespace quirepress {

namespace {

// "2-5", "2-" for an open end, "all", or the flaw.
std::string Read(std::string_view options) {
    const PageRange range = ReadPageRange(options);
    if (range.kind == PageRange::Kind::kNone) return "all";
    if (range.kind == PageRange::Kind::kImpossible) return range.flaw;
    const bool isOpen = range.pages.last == kAllPdfPages.last;
    return std::to_string(range.pages.first) + "-" + (isOpen ? "" : std::to_string(range.pages.last));
}

TEST(PageRange, PagesAreReadWhereTheyAreClear) {
    const struct {
        const char* options;
        const char* pages;
    } kTexts[] = {{"", "all"},
                  {" | ", "all"},
                  {"- -- ---", "all"},
                  {"-r3|-c1 -silent|-extra text", "all"},
                  {"-n 2 -o media=A4 --copies 3 -r3", "all"},
                  {"-n 5|-s2", "2-"},
                  {"-s2", "2-"},
                  {"-s2|-e5", "2-5"},
                  {"-s 2", "2-"},
                  {" -r1  -s  2 -e 5 -color", "2-5"},
                  {"-s 2 | -e5", "2-5"},
                  {"-c1|-S2|-E3|-s5|-e1|-PA4 2|2 sides", "2-3"},
                  {"-c1|-S0|-E0|-s|-s2", "all"},
                  {"-S4|-E0", "4-"},
                  {"-S5|-E2", "no document has such pages: \"-s5|-e2\""}};
    for (const auto& text : kTexts) EXPECT_EQ(Read(text.options), text.pages) << text.options;
}

// Whoever asks for pages and mistypes does not mean the whole document.
TEST(PageRange, WhatIsUnclearIsNeverAllPages) {
    for (const char* options : {"-s",
                                "-e",
                                "-s|2",
                                "-sx",
                                "-s x",
                                "-s2x",
                                "-sx2",
                                "-s=2",
                                "-s2-5",
                                "-s2|-e",
                                "-s2|-e5 7",
                                "-s2 -5",
                                "-s2 e5",
                                "-s2|5",
                                "-s2|-s5",
                                "-s2|-E5",
                                "-S2",
                                "-Sx|-E5",
                                "-s99999999999999999999",
                                "2-5",
                                "s2",
                                "--s2",
                                "\xE2\x80\x93s2|\xE2\x80\x93"
                                "e5",
                                "\"-s2\"",
                                "-r1 e5"})
        EXPECT_EQ(Read(options), "which pages are meant is unclear: \"" + std::string(options) + "\"");
    for (const char* options : {"-s5|-e2", "-s0", "-e0", "-s-2"})
        EXPECT_EQ(Read(options), "no document has such pages: \"" + std::string(options) + "\"");
}

}  // namespace

}  // namespace quirepress
