#include "core/list_item.h"

#include <gtest/gtest.h>

namespace quirepress {
namespace {

TEST(ListItemTest, CommandItemsAreKnownByExactTexts) {
    for (const std::string_view path :
         {"t.tra", "/x/landscape.paperorientation", "run.vbs", "run.bat", "x.bat.pdf", "setup.pro.txt",
          "a.product", "lj.prs", "50.paperscale.old", "bw.papercolor", "9.papersize", "3.papercopies",
          "simplex.paperduplex", "form.ppp", "/data.bat/report.pdf"})
        EXPECT_TRUE(IsCommandItem(path)) << path;
    for (const std::string_view path : {"report.PRS", "lj.prs.pdf", "form.ppp.pdf", "run.BAT", "t.TRA", "bat",
                                        "prs", "report.pdf", "", "pro", "laser.printer", "x.Pro"})
        EXPECT_FALSE(IsCommandItem(path)) << path;
}

TEST(ListItemTest, KindFollowsFromTheText) {
    EXPECT_EQ(KindOfItem("DL;http://h/a.pdf"), ItemKind::kDownload);
    EXPECT_EQ(KindOfItem("DL;https://h/a.bat"), ItemKind::kDownload);
    EXPECT_EQ(KindOfItem("DL;ftp://h/a"), ItemKind::kDownload);
    EXPECT_EQ(KindOfItem("https://www.x.pro/a"), ItemKind::kDownload);
    EXPECT_EQ(KindOfItem("http://h"), ItemKind::kDownload);
    EXPECT_EQ(KindOfItem("ftp://h/a"), ItemKind::kDocument);
    EXPECT_EQ(KindOfItem("DL;http:/h"), ItemKind::kDocument);
    EXPECT_EQ(KindOfItem("-------Separator-------"), ItemKind::kSeparator);
    EXPECT_EQ(KindOfItem("-------Separator------- "), ItemKind::kDocument);
    EXPECT_EQ(KindOfItem("laser.printer"), ItemKind::kCommand);
    EXPECT_EQ(KindOfItem("report.PRS"), ItemKind::kDocument);
}

TEST(ListItemTest, TextsOfOneColumnLeaveTheOthersAlone) {
    ColumnTexts texts;
    texts[kColumnSelected] = "Yes";
    texts[kColumnFilename] = "/a.pdf";
    texts[kColumnProfiling] = "last";
    ListItem item(texts);
    item.SetText(kColumnStatus, "a long status that makes the item grow, and then some more of it");
    item.SetText(kColumnSelected, "");
    item.SetText(kColumnProfiling, std::string_view("with\0zero", 9));
    item.SetText(kColumnFilename, item.Text(kColumnStatus));  // from itself
    item.SetText(kColumnStatus, "Done");
    EXPECT_EQ(item.Text(kColumnSelected), "");
    EXPECT_EQ(item.Text(kColumnFilename), "a long status that makes the item grow, and then some more of it");
    EXPECT_EQ(item.Text(kColumnPages), "");
    EXPECT_EQ(item.Text(kColumnStatus), "Done");
    EXPECT_EQ(item.Text(kColumnProfiling), std::string_view("with\0zero", 9));
}

}  // namespace
}  // namespace quirepress
