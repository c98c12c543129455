// The examine window: where it stands and how small it gets, how it closes, what it saves, and the
// font that a Japanese reader sees in it.

#include "EntryControlFixture.h"
#include "host/LanguageAdaptation.h"
#include "host/LibraryForms.h"
#include "searchdata/CFilterColumn.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/Resources.h"
#include "searchdata/widgets/WidgetUiServices.h"
#include "searchdata/widgets/frmExamine.h"

#include <QApplication>
#include <QLineEdit>
#include <QScreen>
#include <QTest>
#include <cmath>

using namespace searchdata;
using namespace searchdata::test;

namespace {

class ExamineWindowTest : public EntryControlTest {
protected:
    void TearDown() override
    {
        form.reset();
        EntryControlTest::TearDown();
    }
    QWidget* surface() const override { return form.get(); }
    static QRect screenArea() { return QGuiApplication::primaryScreen()->availableGeometry(); }
    UKVOSearch* kseEdit() const { return child<UKVOSearch>("kseEdit"); }

    /// A fresh window on record `id` of Files, shown as `Edit` or `View` shows it.
    void openWindow(KVOSearchEditExamineModes mode, int id = 2)
    {
        ui->setUsableScreenSize(screenArea().size());
        cols = columns();
        entry.id = id;
        form = std::make_unique<frmExamine>();
        form->Prepare(mode, *cols, &entry, nullptr, nullptr);
        form->show();
        QApplication::setActiveWindow(form.get());
        ASSERT_TRUE(QTest::qWaitForWindowActive(form.get()));
        settle();
    }
    /// Starts editing record `id` in a fresh window and types a customer.
    void editCustomer(int id)
    {
        openWindow(kseModeEdit, id);
        startEditing();
        ASSERT_TRUE(kseEdit()->IsEditing());
        type(child<QLineEdit>("txtTextField_1"), "Acme");
        settle();
        ASSERT_TRUE(kseEdit()->IsDirty());
        ui->clearRequests();
    }
    /// The question of the window's close, as the services recorded it.
    static QString closeQuestion(int title) { return "question: " + GetResourceText(title) + ": " + GetResourceText(7872); }

    std::shared_ptr<CFilterColumns> cols;
    std::unique_ptr<frmExamine> form;
};

TEST_P(ExamineWindowTest, TheWindowKeepsItsMinimumAndStaysOnTheScreen)
{
    // Editing, the button column sets a minimum height worth testing.
    openWindow(kseModeEdit);
    const QRect area = screenArea();
    EXPECT_EQ(form->size(), QSize(qRound(area.width() * 0.8), qRound(area.height() * 0.8)));
    EXPECT_TRUE(area.contains(form->frameGeometry()));
    EXPECT_EQ(kseEdit()->geometry(), form->rect());
    // The cases below are in outer (frame) coordinates, as the screen's edges are.
    const QRect outer = form->frameGeometry(), inner = form->geometry();
    const QMargins border(inner.left() - outer.left(), inner.top() - outer.top(), outer.right() - inner.right(),
                          outer.bottom() - inner.bottom());

    const QSize minimum = QSize(int(std::ceil(kseEdit()->WidthMin())), int(std::ceil(kseEdit()->HeightMin())))
                          .grownBy(border);
    ASSERT_GT(minimum.width(), 200);
    ASSERT_GT(minimum.height(), 100);
    const QSize roomy = minimum + QSize(60, 40);
    const QPoint inside = area.topLeft() + QPoint(40, 30);
    const QPoint farCorner = area.bottomRight() + QPoint(1, 1);
    struct Case {
        const char* what;
        QRect asked;
        QRect expected;
    };
    // Each case changes the size, since a move alone is no resize.
    const Case cases[] = {
        {"smaller than the minimum", {inside, QSize(50, 50)}, {inside, minimum}},
        {"narrower only", {inside, QSize(minimum.width() - 30, roomy.height())}, {inside, QSize(minimum.width(), roomy.height())}},
        {"past the right and bottom edges", {farCorner - QPoint(100, 80), roomy}, {farCorner - QPoint(roomy.width(), roomy.height()), roomy}},
        {"too small and past the right edge", {QPoint(area.right() - 20, inside.y()), QSize(50, 50)},
         {QPoint(farCorner.x() - minimum.width(), inside.y()), minimum}},
        {"wider than the screen", {inside, QSize(area.width() + 100, roomy.height())},
         {QPoint(area.left(), inside.y()), QSize(area.width() + 100, roomy.height())}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        form->setGeometry(c.asked.marginsRemoved(border));
        EXPECT_TRUE(waitFor([&] { return form->frameGeometry() == c.expected; }))
            << "frame at " << form->frameGeometry().x() << "," << form->frameGeometry().y() << " " << form->frameGeometry().width() << "x"
            << form->frameGeometry().height();
        EXPECT_EQ(kseEdit()->geometry(), form->rect()) << "the control fills the window";
    }

    // Where 0.8 of the area is less than the minimum, the window shows at the minimum.
    ui->setUsableScreenSize(QSizeF(120, 90));
    form = std::make_unique<frmExamine>();
    form->Prepare(kseModeEdit, *cols, &entry, nullptr, nullptr);
    form->show();
    EXPECT_TRUE(waitFor([&] { return form->frameGeometry().size() == minimum; })) << form->width() << "x" << form->height();
}

TEST_P(ExamineWindowTest, AViewWindowHasNothingToSaveAndClosesAtOnceWhicheverWay)
{
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"the close button", [this] { form->close(); }},
        {"Escape", [] { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape); }},
        {"the control's Cancel", [this] { click(button("cmdCancel")); }},
    };
    for (const auto& [way, closeIt] : ways) {
        SCOPED_TRACE(way);
        openWindow(kseModeExamine);
        EXPECT_EQ(form->windowTitle(), GetResourceText(6819));
        EXPECT_EQ(kseEdit()->EditMode(), kseModeExamine);
        EXPECT_FALSE(button("cmdEdit")->isVisible()) << "no way into an edit session";
        ASSERT_NE(QApplication::focusWidget(), nullptr);
        closeIt();
        EXPECT_FALSE(form->isVisible());
        EXPECT_TRUE(ui->questions().isEmpty());
    }
}

TEST_P(ExamineWindowTest, TheSearchsViewShowsTheRecordInALibraryWindowThatGoesAfterIt)
{
    {
        Entry stored;
        stored.id = 4;
        auto values = columns();
        values->GetData(&stored);
        values->Item("Customer")->setUpdatedValue(Value(QStringLiteral("Acme")));
        ASSERT_TRUE(values->SaveDataFromClientUpdates(&stored));
    }
    servicesGuard.reset();
    servicesGuard = std::make_unique<ServicesGuard>(std::make_shared<WidgetUiServices>());
    const std::shared_ptr<CSearchFilter> search = open();
    ASSERT_NE(search, nullptr);

    QString title, shown;
    KVOSearchEditExamineModes mode = kseModeEdit;
    bool registered = false;
    whenModalAppears(
        [&](QWidget* window) {
            title = window->windowTitle();
            mode = named<UKVOSearch>(window, "kseEdit")->EditMode();
            shown = named<QLineEdit>(window, "txtTextField_1")->text();
            registered = LibraryForms().contains(window);
            // The buttons follow the mode on the control's next update.
            QPushButton* cancel = named<QPushButton>(window, "cmdCancel");
            const bool shown = waitFor([cancel] { return cancel->isVisible(); });
            EXPECT_TRUE(shown) << "no Cancel to close the window with";
            if (shown)
                QTest::mouseClick(cancel, Qt::LeftButton);
            else
                window->close();
        },
        QStringLiteral("frmExamine"));
    entry.id = 4;
    search->View(nullptr, &entry, nullptr);
    EXPECT_EQ(title, GetResourceText(6819));
    EXPECT_EQ(mode, kseModeExamine);
    EXPECT_EQ(shown, "Acme");
    EXPECT_TRUE(registered);
    for (const QWidget* window : LibraryForms())
        EXPECT_NE(window->objectName(), "frmExamine") << "deleted once it closed";
}

TEST_P(ExamineWindowTest, ForAJapaneseReaderEveryPartAndEveryRowShowsInAJapaneseFont)
{
    const QString japanese = JapaneseFontFamily();
    ASSERT_FALSE(japanese.isEmpty()) << "scripts/install-deps.sh installs a font with Japanese glyphs";
    // The language follows the process locale here; the rows are made after the window and the
    // control, so they show whether the family reaches what comes later.
    struct ReaderLocale {
        explicit ReaderLocale(QLocale::Language language) { QLocale::setDefault(QLocale(language)); }
        ~ReaderLocale() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }
    };
    const std::pair<const char*, std::function<QWidget*()>> hosts[] = {
        {"the examine window", [this] { openWindow(kseModeEdit); return static_cast<QWidget*>(form.get()); }},
        {"the control alone",
         [this] {
             openControl();
             control->Display(nullptr, &entry, kseModeEdit);
             return static_cast<QWidget*>(control.get());
         }},
    };
    for (const auto& [language, adapted] : {std::pair{QLocale::Japanese, true}, std::pair{QLocale::German, false}}) {
        for (const auto& [host, open] : hosts) {
            SCOPED_TRACE(QLocale::languageToString(language).toStdString() + ", " + host);
            const ReaderLocale reader(language);
            QWidget* window = open();
            ASSERT_FALSE(HasFatalFailure());
            ASSERT_NE(named<QLineEdit>(window, "txtTextField_1"), nullptr) << "the rows are made";
            QList<QWidget*> parts = window->findChildren<QWidget*>();
            parts << window;
            int checked = 0;
            for (const QWidget* part : parts) {
                if (part->window() != window)
                    continue;
                EXPECT_EQ(part->font().family() == japanese, adapted) << part->objectName().toStdString();
                ++checked;
            }
            EXPECT_GT(checked, 40);
        }
    }
}

/// The cases that save, on both databases.
class ExamineWindowSaveTest : public ExamineWindowTest {};

TEST_P(ExamineWindowSaveTest, ClosingWithChangesAsksAndTheAnswerDecides)
{
    struct Case {
        Answer answer;
        bool stillOpen;
        QString stored;
    };
    int id = 2;
    for (const Case& c : {Case{Answer::Cancel, true, ""}, Case{Answer::Yes, false, "Acme"}, Case{Answer::No, false, ""}}) {
        SCOPED_TRACE(static_cast<int>(c.answer));
        ASSERT_NO_FATAL_FAILURE(editCustomer(++id));
        EXPECT_EQ(form->windowTitle(), GetResourceText(6816));
        ui->queueAnswer(c.answer);
        form->close();
        EXPECT_EQ(ui->requests(), QStringList{closeQuestion(6816)});
        EXPECT_EQ(form->isVisible(), c.stillOpen);
        EXPECT_EQ(stored("Customer", id), c.stored);
        if (c.stillOpen) {
            EXPECT_TRUE(kseEdit()->IsEditing());
            EXPECT_TRUE(kseEdit()->IsDirty());
            EXPECT_EQ(child<QLineEdit>("txtTextField_1")->text(), "Acme");
        }
    }
}

TEST_P(ExamineWindowSaveTest, TheControlsOkSavesWhatChangedAndItsCancelDropsIt)
{
    int id = 2;
    for (const auto& [press, kept] : {std::pair{"cmdOk", "Acme"}, std::pair{"cmdCancel", ""}}) {
        SCOPED_TRACE(press);
        ASSERT_NO_FATAL_FAILURE(editCustomer(++id));
        ASSERT_TRUE(button(press)->isEnabled());
        click(button(press));
        EXPECT_FALSE(form->isVisible());
        EXPECT_EQ(stored("Customer", id), kept);
        EXPECT_TRUE(ui->questions().isEmpty()) << "the control's buttons close without a question";
    }
}

SD_INSTANTIATE_SQLITE_SUITE(ExamineWindowTest);
SD_INSTANTIATE_DATABASE_SUITE(ExamineWindowSaveTest);

} // namespace
