#include "searchdata/CCommon.h"
#include "searchdata/IFormInfo.h"
#include "searchdata/Resources.h"
#include "searchdata/UiServices.h"

#include <gtest/gtest.h>

using namespace searchdata;

namespace {

class FakeForm : public IFormInfo {
public:
    QString Caption() const override { return "Owner"; }
    bool GetEnabled() const override { return true; }
    float Height() const override { return 300; }
    bool IsValid() const override { return true; }
    float Left() const override { return left; }
    bool MDIChild() const override { return false; }
    int MousePointer() const override { return 0; }
    QString Name() const override { return "frmOwner"; }
    const IFormInfo* Root() const override { return this; }
    QVariant Tag() const override { return {}; }
    float TextWidth(const QString& text) const override { return float(text.size() * 7); }
    float Top() const override { return top; }
    float Width() const override { return 400; }
    int WindowState() const override { return 0; }
    float left = 1000;
    float top = 50;
};

TEST(CSearchFilter, CaptionsAndPicturesOfTheMenuItems)
{
    CSearchFilter filter;
    EXPECT_EQ(filter.StandardCaption(fltr_FMI_FILTER), GetResourceText(6817));
    EXPECT_EQ(filter.StandardCaption(fltr_FMI_EDITPICKLISTS), GetResourceText(6823));
    EXPECT_TRUE(filter.StandardCaption(static_cast<FilterMenuItems>(8)).isEmpty());
    EXPECT_FALSE(filter.BitmapLarge(fltr_FMI_EDITDATA).isEmpty());
    EXPECT_EQ(filter.BitmapLarge(fltr_FMI_VIEWDATA), filter.BitmapLarge(fltr_FMI_EDITDATA));
    EXPECT_NE(filter.BitmapLarge(fltr_FMI_FILTER), filter.BitmapLarge(fltr_FMI_CLEARFILTER));
    EXPECT_NE(filter.BitmapSmall(fltr_FMI_FILTER), filter.BitmapLarge(fltr_FMI_FILTER));
    EXPECT_TRUE(filter.BitmapSmall(fltr_FMI_EDITPICKLISTS).isEmpty());
    EXPECT_TRUE(filter.BitmapLarge(fltr_FMI_INCLUDESEARCHDATA).isEmpty());
}

TEST(CSearchFilter, WithoutAnOpenCollectionNothingHappens)
{
    auto ui = std::make_shared<HeadlessUiServices>();
    UiServices::install(ui);
    CSearchFilter filter;
    EXPECT_FALSE(filter.Exists());
    filter.SetupOwnerLocation(nullptr);
    filter.Configure(nullptr);
    filter.View(nullptr, nullptr, nullptr);
    EXPECT_TRUE(ui->requests().isEmpty());
    EXPECT_EQ(filter.Edit(nullptr, nullptr), fltr_SUCCESS);
    EXPECT_EQ(ui->requests().size(), 1); // the notice that editing goes elsewhere
    CCommon().CloseGrupruForms();
    EXPECT_EQ(ui->requests().last(), "close forms");
    UiServices::install(nullptr);
}

TEST(CFilterColumns, DialogsStandOverTheOwnerAndStayOnTheScreen)
{
    CFilterColumns columns;
    const QSizeF screen(1280, 800);
    columns.SetOwnerLocation({1000, 50, 400, 300});
    // Pulled back so that the right edge meets the screen's.
    EXPECT_EQ(columns.FormPosition({500, 200}, screen, 20), QPointF(780, 70));
    columns.SetOwnerLocation({-300, 700, 400, 300});
    EXPECT_EQ(columns.FormPosition({500, 200}, screen, 20), QPointF(0, 600));
    columns.SetOwnerLocation({100, 100, 400, 300});
    EXPECT_EQ(columns.FormPosition({500, 200}, screen, 20), QPointF(120, 120));
}

} // namespace
