#include "backends/paper_items.h"

#include <gtest/gtest.h>

#include "platform/spooler.h"

namespace quirepress {
namespace {

// The status that the item gives, and what it makes of `state`.
std::string Apply(std::string_view name, PaperState& state, PaperGroup group = PaperGroup::kPaper) {
    const PaperItem* item = FindPaperItem(name, group);
    if (item == nullptr) return "no item";
    return std::string(item->apply(state, name) ? item->doneStatus : item->failedStatus);
}

TEST(PaperItems, SetWhatTheirNamesSay) {
    PaperState state;
    for (const char* name : {"/a/bw.papercolor", "color.papercolor"})
        EXPECT_EQ(Apply(name, state), "Set Color") << name;
    for (const char* name : {"simplex.paperduplex", "vertical.paperduplex", "horizontal.paperduplex"})
        EXPECT_EQ(Apply(name, state), "Set Duplex") << name;
    for (const char* name : {"portrait.paperorientation", "landscape.paperorientation"})
        EXPECT_EQ(Apply(name, state, PaperGroup::kOrientation), "Set Orientation") << name;
    EXPECT_EQ(OptionsText(state.ticket, ""), "sides=two-sided-short-edge color=color orientation=landscape");
}

TEST(PaperItems, TakeTheFirstDigitsOfTheTitleWithinTheirLimits) {
    const std::string folder = "/jobs 7/";
    struct Case {
        const char* title;
        const char* status;
        int value;  // afterwards; 5 was there before
    };
    PaperState state;
    for (const Case& expected :
         {Case{"1.paperscale", "Set Scale", 1}, Case{"1000.paperscale", "Set Scale", 1000},
          Case{"1001.paperscale", "Set Scale", 100}, Case{"0.paperscale", "Set Scale", 100},
          Case{".paperscale", "Set Scale", 100}, Case{"99999999999999999999.paperscale", "Set Scale", 100},
          Case{"at 0071% of 2.paperscale", "Set Scale", 71}}) {
        state.ticket.scale = 5;
        EXPECT_EQ(Apply(folder + expected.title, state), expected.status) << expected.title;
        EXPECT_EQ(state.ticket.scale, expected.value) << expected.title;
    }
    for (const Case& expected :
         {Case{"9.papersize", "Set Size", 9}, Case{"1000.papersize", "Set Size", 1000},
          Case{"1001.papersize", "Error Size Not Set", 5}, Case{"0.papersize", "Error Size Not Set", 5},
          Case{"A4.papersize", "Set Size", 4}, Case{"letter.papersize", "Error Size Not Set", 5}}) {
        state.ticket.paperSize = 5;
        EXPECT_EQ(Apply(folder + expected.title, state), expected.status) << expected.title;
        EXPECT_EQ(state.ticket.paperSize, expected.value) << expected.title;
    }
    for (const Case& expected :
         {Case{"1000000.papercopies", "Set Copies", 1'000'000}, Case{"-3.papercopies", "Set Copies", 3},
          Case{"1000001.papercopies", "Error Copies Not Set", 5},
          Case{"0.papercopies", "Error Copies Not Set", 5},
          Case{".papercopies", "Error Copies Not Set", 5}}) {
        state.ticket.copies = 5;
        EXPECT_EQ(Apply(folder + expected.title, state), expected.status) << expected.title;
        EXPECT_EQ(state.ticket.copies, expected.value) << expected.title;
    }
}

TEST(PaperItems, SaveAndRestoreTheOrientation) {
    PaperState state;
    const auto apply = [&](std::string_view name) { return Apply(name, state, PaperGroup::kOrientation); };
    EXPECT_EQ(apply("restore.paperorientation"), "Error Orientation Not Set");
    EXPECT_EQ(apply("save.paperorientation"), "Set Orientation");
    EXPECT_EQ(apply("landscape.paperorientation"), "Set Orientation");
    EXPECT_EQ(apply("restore.paperorientation"), "Set Orientation");
    EXPECT_EQ(state.ticket.orientation, JobTicket::Orientation::kUnset);
    EXPECT_EQ(apply("restore.paperorientation"), "Set Orientation");  // as often as wanted
}

TEST(PaperItems, RefuseWordsThatMeanNothing) {
    PaperState state;
    EXPECT_EQ(Apply("sideways.paperorientation", state, PaperGroup::kOrientation),
              "Error Orientation Not Set");
    EXPECT_EQ(Apply("Color.papercolor", state), "Error Color Not Set");
    EXPECT_EQ(Apply("duplex.paperduplex", state), "Error Duplex Not Set");
    EXPECT_EQ(Apply("9.PaperSize", state), "no item");
    EXPECT_EQ(Apply("landscape.paperorientation", state), "no item");
    EXPECT_EQ(state.ticket, JobTicket());
    // An unknown word gives way to what the name says besides.
    EXPECT_EQ(Apply("grey.papercolor 3.papercopies", state), "Set Copies");
    EXPECT_EQ(Apply("2.papercopies 60.paperscale", state), "Set Scale");
}

}  // namespace
}  // namespace quirepress
