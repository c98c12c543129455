#include "filter/frmFilter.h"

#include "entrycontrol/TextBoxAdapter.h"
#include "filter/frmFilterHelp.h"
#include "host/FormPlacement.h"
#include "host/KeyPress.h"
#include "host/LanguageAdaptation.h"
#include "host/LibraryForms.h"
#include "platform/Guard_p.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/CFilterTerms.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/Dialect.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/Resources.h"
#include "searchdata/UiServices.h"
#include "searchdata/Validation.h"
#include "searchdata/Value.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPixmap>
#include <QPointer>
#include <QPushButton>
#include <QStandardItemModel>
#include <algorithm>

namespace searchdata {

namespace {

constexpr char kModule[] = "frmFilter";

// Texts by number.
constexpr int kCaption = 6817;
constexpr int kFirstComparison = 7488;
constexpr int kLblFields = 7584;
constexpr int kLblComparison = 7585;
constexpr int kLblCompareTo = 7586;
constexpr int kNoField = 7587;
constexpr int kAnd = 7588;
constexpr int kOr = 7589;
constexpr int kMnuHelp = 7590;
constexpr int kMnuHelpDisplay = 7591;
constexpr int kCmdOK = 8066;
constexpr int kCmdCancel = 8073;
constexpr int kCmdClear = 8076;
constexpr int kCmdHelp = 8085;
constexpr int kBaseFieldPicture = 501;
constexpr int kSearchColumnPicture = 502;

// The margin: the left edge of the first row's conjunction. Rows stand three margins apart.
constexpr int kMargin = 10;
constexpr int kFieldWidth = 200;
constexpr int kCompareToWidth = 190;

const QColor kWhite(0xFF, 0xFF, 0xFF);
const QColor kBlack(0, 0, 0);
const QColor kRed(0xFF, 0, 0);

const QString kTrue = QStringLiteral("True");
const QString kFalse = QStringLiteral("False");

QIcon pictureIcon(int number)
{
    QPixmap pixmap;
    pixmap.loadFromData(GetResourcePicture(number), "PNG");
    return QIcon(pixmap);
}

QString controlName(const char* name, int i)
{
    return QLatin1String(name) + QLatin1Char('_') + QString::number(i);
}

/// Member `i` of a row array, made on first use. Below the first row it stands three margins under
/// the member above, in the same column.
template <typename Control>
Control* rowMember(QWidget* form, std::array<Control*, frmFilter::kRows>& members, const char* name, int i, int m)
{
    Control*& control = members[i];
    if (!control) {
        control = new Control(form);
        control->setObjectName(controlName(name, i));
    }
    if (i > 0)
        control->setGeometry(members[i - 1]->geometry().translated(0, 3 * m));
    return control;
}

/// Gives a control its background and text colours. Where the palette it inherits already has them,
/// the control goes back to that palette rather than a copy of its own: controls that share one
/// palette share the style's cached drawings too, which makes the forty controls of the rows much
/// quicker to show. A closed list paints its face as the style's button; its field is the Base role.
void setColours(QWidget* control, const QColor& background, const QColor& text)
{
    const QPalette::ColorGroup group = control->isEnabled() ? QPalette::Active : QPalette::Disabled;
    const QPalette inherited = control->parentWidget() ? control->parentWidget()->palette() : QApplication::palette(control);
    if (inherited.color(group, QPalette::Base) == background && inherited.color(QPalette::Active, QPalette::Text) == text) {
        if (control->testAttribute(Qt::WA_SetPalette))
            control->setPalette(QPalette());
        return;
    }
    QPalette palette = inherited;
    palette.setColor(QPalette::Base, background);
    palette.setColor(QPalette::Text, text);
    control->setPalette(palette);
}

/// The operations offered for a class, in list order.
QList<EComparisonOperations> comparisonsOf(FilterComparisonClasses comparisonClass)
{
    switch (comparisonClass) {
    case kvoCC_Boolean:
        return {kvoOP_IsFalse, kvoOP_IsTrue};
    case kvoCC_Keyword:
        return {kvoOP_Includes, kvoOP_Excludes};
    case kvoCC_Text:
        return {kvoOP_Equals, kvoOP_NotEquals, kvoOP_Greater, kvoOP_Less, kvoOP_GreatorOrEqual, kvoOP_LessOrEqual, kvoOP_IsLike,
                kvoOP_IsNotLike};
    default:
        return {kvoOP_Equals, kvoOP_NotEquals, kvoOP_Greater, kvoOP_Less, kvoOP_GreatorOrEqual, kvoOP_LessOrEqual};
    }
}

bool isTyped(FilterComparisonClasses comparisonClass)
{
    return comparisonClass == kvoCC_Keyword || comparisonClass == kvoCC_Text;
}

} // namespace

FilterComparisonClasses FilterFieldTag::comparisonClass() const
{
    if (field)
        return ComparisonClassFromColumn(&*field);
    const auto live = column.lock();
    return ComparisonClassFromColumn(live.get());
}

frmFilter::frmFilter(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmFilter"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    lblFields = new QLabel(this);
    lblFields->setObjectName(QStringLiteral("lblFields"));
    lblComparison = new QLabel(this);
    lblComparison->setObjectName(QStringLiteral("lblComparison"));
    lblCompareTo = new QLabel(this);
    lblCompareTo->setObjectName(QStringLiteral("lblCompareTo"));

    auto button = [this](const char* name, void (frmFilter::*handler)()) {
        auto* b = new QPushButton(this);
        b->setObjectName(QLatin1String(name));
        connect(b, &QPushButton::clicked, this, handler);
        return b;
    };
    cmdOK = button("cmdOK", &frmFilter::cmdOK_Click);
    cmdCancel = button("cmdCancel", &frmFilter::reject);
    cmdClear = button("cmdClear", &frmFilter::cmdClear_Click);
    cmdHelp = button("cmdHelp", &frmFilter::ShowHelp);
    cmdOK->setDefault(true);

    m_fieldList = new QStandardItemModel(this);
    m_closedList = new QStandardItemModel(this);

    menuBar = new QMenuBar(this);
    menuBar->setObjectName(QStringLiteral("menuBar"));
    mnuHelp = menuBar->addMenu(QString());
    mnuHelp->setObjectName(QStringLiteral("mnuHelp"));
    mnuHelpDisplay = mnuHelp->addAction(QString());
    mnuHelpDisplay->setObjectName(QStringLiteral("mnuHelpDisplay"));
    connect(mnuHelpDisplay, &QAction::triggered, this, &frmFilter::ShowHelp);

    // Member 0 of each row array is made with the form; the others on first use.
    InitMyConjunction(0, kMargin);
    InitMyField(0, kMargin);
    InitMyComparison(0, kMargin);
    InitMyCompareTo(0, kMargin);
    RegisterLibraryForm(this);
    FormToJapanese(this);
}

frmFilter::~frmFilter() = default;

std::shared_ptr<CFilterTerms> frmFilter::Filter(std::shared_ptr<CFilterColumns> columns, std::shared_ptr<CFilterTerms> terms,
                                                const IFormInfo* owner)
{
    SD_PROC("Filter");
    std::shared_ptr<CFilterTerms> result;
    // The clean-up of the library's windows may destroy the dialog while it runs; then nothing was accepted.
    const QPointer<frmFilter> self(this);
    SD_GUARDED([&] {
        if (Prepare(std::move(columns), std::move(terms), owner))
            exec();
        if (self)
            result = m_result;
    });
    if (self) {
        m_columns.reset();
        m_terms.reset();
    }
    return result;
}

bool frmFilter::Prepare(std::shared_ptr<CFilterColumns> columns, std::shared_ptr<CFilterTerms> terms, const IFormInfo* owner)
{
    SD_PROC("Prepare");
    return SD_GUARDED([&] {
        m_columns = std::move(columns);
        m_terms = std::move(terms);
        m_result.reset();
        m_fieldsHadFocus = false;
        if (!m_columns)
            detail::fail(QStringLiteral("the filter dialog needs columns"));
        ControlsInitialize();
        Setup();
        PositionForm(*this, *m_columns, owner);
    });
}

// ---- building the rows ------------------------------------------------------------------------------

void frmFilter::ControlsInitialize()
{
    lblFields->setText(GetResourceText(kLblFields));
    lblComparison->setText(GetResourceText(kLblComparison));
    lblCompareTo->setText(GetResourceText(kLblCompareTo));
    mnuHelp->setTitle(GetResourceText(kMnuHelp));
    mnuHelpDisplay->setText(GetResourceText(kMnuHelpDisplay));
    cmdCancel->setText(GetResourceText(kCmdCancel));
    cmdClear->setText(GetResourceText(kCmdClear));
    cmdOK->setText(GetResourceText(kCmdOK));
    cmdHelp->setText(GetResourceText(kCmdHelp));
    m_baseFieldImage = pictureIcon(kBaseFieldPicture);
    m_searchColumnImage = pictureIcon(kSearchColumnPicture);

    // The columns of the rows stand beside each other, with the labels over them.
    const int m = cboConjunction[0]->x();
    const QFontMetrics metrics(font());
    int comparisonWidth = 0;
    for (int op = kvoOP_IsFalse; op <= kvoOP_Excludes; ++op)
        comparisonWidth = std::max(comparisonWidth, metrics.horizontalAdvance(GetResourceText(kFirstComparison + op)));
    // Beside its longest text a list needs room for its frame and arrow.
    const int listExtra = 3 * m + 10;
    const int conjunctionWidth =
        std::max(metrics.horizontalAdvance(GetResourceText(kAnd)), metrics.horizontalAdvance(GetResourceText(kOr))) + listExtra;
    comparisonWidth += listExtra;
    const int height = std::max(imgcboFields[0]->sizeHint().height(), txtCompareTo[0]->sizeHint().height());
    const int labelTop = menuBar->sizeHint().height() + m;
    const int rowTop = labelTop + lblFields->sizeHint().height() + m / 2;

    cboConjunction[0]->setGeometry(m, rowTop, conjunctionWidth, height);
    imgcboFields[0]->setGeometry(cboConjunction[0]->geometry().right() + 1 + m, rowTop, kFieldWidth, height);
    cboComparison[0]->setGeometry(imgcboFields[0]->geometry().right() + 1 + m, rowTop, comparisonWidth, height);
    txtCompareTo[0]->setGeometry(cboComparison[0]->geometry().right() + 1 + m, rowTop, kCompareToWidth, height);
    for (auto [label, over] : {std::pair<QLabel*, QWidget*>{lblFields, imgcboFields[0]}, {lblComparison, cboComparison[0]},
                               {lblCompareTo, txtCompareTo[0]}})
        label->setGeometry(over->x(), labelTop, over->width(), label->sizeHint().height());

    for (int i = 0; i < kRows; ++i) {
        InitMyConjunction(i, m);
        InitMyField(i, m);
        InitMyComparison(i, m);
        InitMyCompareTo(i, m);
    }
    // Tab runs along each row and then down; closed rows are skipped because they are disabled.
    QWidget* previous = nullptr;
    for (int i = 0; i < kRows; ++i)
        for (QWidget* control : {static_cast<QWidget*>(cboConjunction[i]), static_cast<QWidget*>(imgcboFields[i]),
                                 static_cast<QWidget*>(cboComparison[i]), static_cast<QWidget*>(txtCompareTo[i])}) {
            if (previous)
                setTabOrder(previous, control);
            previous = control;
        }
    for (QWidget* control : {cmdOK, cmdCancel, cmdClear, cmdHelp}) {
        setTabOrder(previous, control);
        previous = control;
    }
    placeButtonsAndForm(m);
}

void frmFilter::InitMyConjunction(int i, int m)
{
    if (i < 0 || i >= kRows)
        return;
    QComboBox* combo = rowMember(this, cboConjunction, "cboConjunction", i, m);
    if (i == 0) {
        // The first row joins nothing; its conjunction only marks the margin.
        combo->move(m, combo->y());
        combo->hide();
        return;
    }
    combo->show();
    EnableControl(combo, false);
}

void frmFilter::InitMyField(int i, int m)
{
    if (i < 0 || i >= kRows)
        return;
    const bool made = !imgcboFields[i];
    QComboBox* combo = rowMember(this, imgcboFields, "imgcboFields", i, m);
    if (made) {
        combo->installEventFilter(this);
        connect(combo, &QComboBox::activated, this, [this, i] { imgcboFields_Click(i); });
    }
    closeFieldList(combo);
    combo->show();
    EnableControl(combo, false);
}

void frmFilter::InitMyComparison(int i, int m)
{
    if (i < 0 || i >= kRows)
        return;
    QComboBox* combo = rowMember(this, cboComparison, "cboComparison", i, m);
    combo->show();
    EnableControl(combo, false);
}

void frmFilter::InitMyCompareTo(int i, int m)
{
    if (i < 0 || i >= kRows)
        return;
    const bool made = !txtCompareTo[i];
    QLineEdit* edit = rowMember(this, txtCompareTo, "txtCompareTo", i, m);
    if (made) {
        edit->installEventFilter(this);
        // Drops would bring in text that no key press was asked about.
        edit->setAcceptDrops(false);
        edit->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(edit, &QLineEdit::textChanged, this, [this, i] { txtCompareTo_Change(i); });
        connect(edit, &QLineEdit::customContextMenuRequested, this, [this, i](const QPoint& at) { txtCompareTo_ContextMenu(i, at); });
    }
    edit->clear();
    setCompareToValid(i, true);
    edit->show();
    EnableControl(edit, false);
}

void frmFilter::placeButtonsAndForm(int m)
{
    int buttonWidth = 0;
    for (QPushButton* b : {cmdOK, cmdCancel, cmdClear, cmdHelp})
        buttonWidth = std::max({buttonWidth, b->sizeHint().width(), 80});
    const int buttonHeight = cmdOK->sizeHint().height();
    const QRect last = txtCompareTo[kRows - 1]->geometry();
    const int top = last.y() + last.height() + buttonHeight / 2;
    // Help stands apart on the left; the buttons that end the dialog on the right.
    cmdHelp->setGeometry(m, top, buttonWidth, buttonHeight);
    int left = last.right() + 1 - buttonWidth;
    for (QPushButton* b : {cmdCancel, cmdOK, cmdClear}) {
        b->setGeometry(left, top, buttonWidth, buttonHeight);
        left -= buttonWidth + m;
    }
    int right = 0;
    int bottom = 0;
    for (const QWidget* child : findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        if (child->isHidden() || child == menuBar)
            continue;
        right = std::max(right, child->geometry().right() + 1);
        bottom = std::max(bottom, child->geometry().bottom() + 1);
    }
    setFixedSize(right + m, bottom + m);
    menuBar->setGeometry(0, 0, width(), menuBar->sizeHint().height());
}

void frmFilter::EnableControl(QWidget* control, bool enabled)
{
    control->setEnabled(enabled);
    setColours(control, enabled ? kWhite : QApplication::palette().color(QPalette::Button), kBlack);
    // A closed field list shows no text.
    if (auto* combo = qobject_cast<QComboBox*>(control);
        !enabled && combo && std::find(imgcboFields.begin(), imgcboFields.end(), combo) != imgcboFields.end())
        combo->setCurrentIndex(-1);
    control->update();
}

// ---- the lists ------------------------------------------------------------------------------------

QList<StructureColumn> frmFilter::BaseFields(const CFilterColumns& columns)
{
    QList<StructureColumn> fields;
    if (const auto& structure = columns.BaseStructure())
        for (const StructureColumn& field : structure->StructureColumns())
            if (CSearchFilter::FilterFieldClass(field.name, structure->name(), columns) != kvoCC_Unknown)
                fields.append(field);
    return fields;
}

void frmFilter::makeFieldList()
{
    QList<QStandardItem*> items;
    auto* none = new QStandardItem(GetResourceText(kNoField));
    none->setData(noneKey(), KeyRole);
    items.append(none);
    for (const auto& column : *m_columns) {
        auto* item = new QStandardItem(m_searchColumnImage, column->CaptionOrName());
        item->setData(column->Name(), KeyRole);
        item->setData(QVariant::fromValue(FilterFieldTag{std::weak_ptr<const CFilterColumn>(column), std::nullopt}), TagRole);
        items.append(item);
    }
    const QString base = m_columns->BaseTableName();
    for (const StructureColumn& field : BaseFields(*m_columns)) {
        auto* item = new QStandardItem(m_baseFieldImage, field.displayNameOrName());
        item->setData(dialect().QualifiedName(field.name, base), KeyRole);
        item->setData(QVariant::fromValue(FilterFieldTag{{}, field}), TagRole);
        items.append(item);
    }
    m_fieldList->clear();
    m_fieldList->invisibleRootItem()->appendRows(items);
}

void frmFilter::LoadColumns(QComboBox* combo)
{
    // Every open row shows the same entries; each keeps its own choice.
    combo->setModel(m_fieldList);
    combo->setCurrentIndex(0);
    EnableControl(combo, true);
}

void frmFilter::closeFieldList(QComboBox* combo)
{
    // A list made just now is empty already.
    if (combo->model() == m_fieldList)
        combo->setModel(m_closedList);
}

void frmFilter::LoadConjunctions(QComboBox* combo)
{
    combo->clear();
    combo->addItem(GetResourceText(kAnd), int(kvoCJ_And));
    combo->addItem(GetResourceText(kOr), int(kvoCJ_OR));
    combo->setCurrentIndex(0);
    EnableControl(combo, true);
}

void frmFilter::LoadComparisons(FilterComparisonClasses comparisonClass, int i)
{
    QComboBox* combo = cboComparison[i];
    combo->clear();
    for (EComparisonOperations op : comparisonsOf(comparisonClass))
        combo->addItem(GetResourceText(kFirstComparison + op), int(op));
    EnableControl(combo, true);
    combo->setCurrentIndex(0);
    EnableControl(txtCompareTo[i], comparisonClass != kvoCC_Boolean);
    Revalidate(i);
    // The next row opens, unless it is open already and keeps what the user chose there.
    if (i + 1 < kRows && !imgcboFields[i + 1]->isEnabled()) {
        LoadConjunctions(cboConjunction[i + 1]);
        LoadColumns(imgcboFields[i + 1]);
    }
}

void frmFilter::ClearRowsFrom(int i)
{
    for (int k = std::max(i, 0); k < kRows; ++k) {
        // The field goes first, so that the emptied compare-to box is judged with no class.
        if (k > i) {
            cboConjunction[k]->clear();
            EnableControl(cboConjunction[k], false);
            closeFieldList(imgcboFields[k]);
            EnableControl(imgcboFields[k], false);
        }
        cboComparison[k]->clear();
        EnableControl(cboComparison[k], false);
        txtCompareTo[k]->clear();
        EnableControl(txtCompareTo[k], false);
    }
}

// ---- restoring a filter ---------------------------------------------------------------------------

void frmFilter::Setup()
{
    const auto& host = m_columns->BaseTableObject();
    const QString caption = host ? host->EditFilterCaption() : QString();
    setWindowTitle(caption.isEmpty() ? GetResourceText(kCaption) : caption);
    makeFieldList();
    LoadColumns(imgcboFields[0]);
    if (!m_terms)
        return;
    const QString base = m_columns->BaseTableName();
    for (const auto& term : *m_terms) {
        const int r = term->Sequence() - 1;
        if (r < 0 || r >= kRows)
            return;
        if (term->Sequence() >= 2) {
            const int conjunction = cboConjunction[r]->findData(int(term->Conjunction()));
            if (conjunction < 0)
                return;
            cboConjunction[r]->setCurrentIndex(conjunction);
        }
        const QString key = TextEquals(term->Table(), base, 1) ? dialect().QualifiedName(term->Field(), term->Table()) : term->Field();
        QComboBox* fields = imgcboFields[r];
        int found = -1;
        for (int k = 0; k < fields->count() && found < 0; ++k)
            if (TextEquals(fields->itemData(k, KeyRole).toString(), key, 1))
                found = k;
        // A filter that names a column deleted since is restored up to that term.
        if (found < 0)
            return;
        fields->setCurrentIndex(found);
        imgcboFields_Click(r);
        if (const int op = cboComparison[r]->findData(int(term->Operation())); op >= 0)
            cboComparison[r]->setCurrentIndex(op);
        if (term->ComparisonClass() >= kvoCC_Keyword && term->ComparisonClass() <= kvoCC_Date) {
            txtCompareTo[r]->setText(term->CompareTo());
            Revalidate(r);
        }
    }
}

// ---- handlers of the rows ---------------------------------------------------------------------------

void frmFilter::imgcboFields_Click(int i)
{
    SD_PROC("imgcboFields_Click");
    SD_GUARDED([&] {
        const std::optional<FilterFieldTag> tag = selectedTag(i);
        if (tag && tag->live())
            LoadComparisons(tag->comparisonClass(), i);
        else
            ClearRowsFrom(i);
        ControlsUpdate();
    });
}

void frmFilter::imgcboFields_GotFocus()
{
    SD_PROC("imgcboFields_GotFocus");
    SD_GUARDED([&] {
        if (m_fieldsHadFocus)
            return;
        m_fieldsHadFocus = true;
        for (int i = 0; i < kRows; ++i) {
            const std::optional<FilterFieldTag> tag = selectedTag(i);
            if (!tag || !tag->live()) {
                ClearRowsFrom(i);
                ControlsUpdate();
                return;
            }
        }
    });
}

bool frmFilter::ValidCompareTo(const QString& text, FilterComparisonClasses comparisonClass)
{
    switch (comparisonClass) {
    case kvoCC_Keyword:
    case kvoCC_Text:
        return !text.trimmed().isEmpty();
    case kvoCC_Numeric:
        return ValidNumber(text, true);
    case kvoCC_Date:
        return ValidDate(text, true);
    default:
        return true;
    }
}

void frmFilter::txtCompareTo_Change(int i)
{
    SD_PROC("txtCompareTo_Change");
    SD_GUARDED([&] {
        const FilterComparisonClasses comparisonClass = rowClass(i);
        setCompareToValid(i, comparisonClass == kvoCC_Unknown || ValidCompareTo(txtCompareTo[i]->text(), comparisonClass));
        ControlsUpdate();
    });
}

bool frmFilter::txtCompareTo_KeyPress(int i, int key)
{
    // Numbers and dates are judged as a whole; texts also key by key.
    if (!isTyped(rowClass(i)))
        return true;
    detail::TextBoxAdapter box(txtCompareTo[i]);
    if (ValidKeyPress(&box, key, 0))
        return true;
    UiServices::current().Beep();
    return false;
}

void frmFilter::txtCompareTo_GotFocus(int i)
{
    setColours(txtCompareTo[i], kWhite, kBlack);
    txtCompareTo[i]->selectAll();
}

void frmFilter::txtCompareTo_LostFocus(int i)
{
    SD_PROC("txtCompareTo_LostFocus");
    SD_GUARDED([&] {
        if (txtCompareTo[i]->text().isEmpty())
            return;
        if (compareToValid(i))
            normalise(i);
        else
            setColours(txtCompareTo[i], kRed, kWhite);
    });
}

void frmFilter::txtCompareTo_ContextMenu(int i, const QPoint& position)
{
    QLineEdit* edit = txtCompareTo[i];
    std::unique_ptr<QMenu> menu(edit->createStandardContextMenu());
    // A paste from the menu is judged as the paste key would be.
    if (QAction* paste = pasteAction(menu.get(), "QLineEdit"); paste && paste->isEnabled() && isTyped(rowClass(i))) {
        detail::TextBoxAdapter box(edit);
        paste->setEnabled(ValidKeyPress(&box, kKeyPaste, 0));
    }
    menu->exec(edit->mapToGlobal(position));
}

void frmFilter::normalise(int i)
{
    QLineEdit* edit = txtCompareTo[i];
    const QString text = edit->text();
    QString shown = text;
    switch (rowClass(i)) {
    case kvoCC_Keyword:
    case kvoCC_Text:
        shown = text.trimmed();
        break;
    case kvoCC_Date:
        // The user sees how the date was read.
        if (!text.trimmed().isEmpty())
            if (const auto date = ParseDateText(text))
                shown = DateToText(date.value());
        break;
    default:
        break;
    }
    if (shown != text)
        edit->setText(shown);
}

void frmFilter::Revalidate(int i)
{
    QLineEdit* edit = txtCompareTo[i];
    const FilterComparisonClasses comparisonClass = rowClass(i);
    if (!edit->isEnabled())
        setCompareToValid(i, true);
    else if (comparisonClass != kvoCC_Unknown)
        setCompareToValid(i, ValidCompareTo(edit->text(), comparisonClass));
    if (comparisonClass == kvoCC_Unknown || !edit->isEnabled())
        return;
    if (compareToValid(i)) {
        normalise(i);
        setColours(edit, kWhite, kBlack);
    } else {
        setColours(edit, kRed, kWhite);
    }
}

void frmFilter::ControlsUpdate()
{
    bool ok = HasField(0);
    cmdClear->setEnabled(ok);
    for (int i = 0; ok && i < kRows; ++i)
        if (HasField(i) && txtCompareTo[i]->isEnabled() && !compareToValid(i))
            ok = false;
    cmdOK->setEnabled(ok);
}

// ---- buttons ----------------------------------------------------------------------------------------

void frmFilter::cmdOK_Click()
{
    SD_PROC("cmdOK_Click");
    SD_GUARDED([&] {
        auto terms = std::make_shared<CFilterTerms>(m_columns);
        const QString base = m_columns->BaseTableName();
        for (int r = 0; r < kRows; ++r) {
            const std::optional<FilterFieldTag> tag = selectedTag(r);
            // "<<none>>" ends the filter; later rows do not count.
            if (!tag)
                break;
            // An invalid row keeps the dialog open.
            if (!tag->live() || !compareToValid(r))
                return;
            const QString key = imgcboFields[r]->currentData(KeyRole).toString();
            const FilterComparisonClasses comparisonClass = tag->comparisonClass();
            const auto operation = static_cast<EComparisonOperations>(cboComparison[r]->currentData().toInt());
            const auto conjunction = r == 0 ? kvoCJ_None : static_cast<EConjunctions>(cboConjunction[r]->currentData().toInt());
            QString table;
            QString field;
            if (const std::optional<QString> baseField = dialect().LeadingName(key)) {
                field = *baseField;
                table = base;
            } else {
                field = key;
                table = comparisonClass == kvoCC_Keyword ? m_columns->SearchKeyword(m_columns->Item(key).get()) : m_columns->SearchKeyword();
            }
            terms->Add(conjunction, table, field, comparisonClass, operation, txtCompareTo[r]->text());
        }
        m_result = std::move(terms);
        accept();
    });
}

void frmFilter::reject()
{
    m_result.reset();
    QDialog::reject();
}

void frmFilter::cmdClear_Click()
{
    SD_PROC("cmdClear_Click");
    SD_GUARDED([&] {
        QComboBox* first = imgcboFields[0];
        first->setCurrentIndex(first->findData(noneKey(), KeyRole));
        imgcboFields_Click(0);
        first->setFocus();
    });
}

void frmFilter::ShowHelp()
{
    SD_PROC("ShowHelp");
    SD_GUARDED([&] { frmFilterHelp::Display(m_columns, this); });
}

// ---- events -----------------------------------------------------------------------------------------

bool frmFilter::eventFilter(QObject* watched, QEvent* event)
{
    const int i = rowOf(watched);
    if (i < 0)
        return QDialog::eventFilter(watched, event);
    if (watched == imgcboFields[i]) {
        if (event->type() == QEvent::FocusIn)
            imgcboFields_GotFocus();
    } else if (watched == txtCompareTo[i]) {
        switch (event->type()) {
        case QEvent::FocusIn:
            txtCompareTo_GotFocus(i);
            break;
        case QEvent::FocusOut:
            txtCompareTo_LostFocus(i);
            break;
        case QEvent::KeyPress:
            if (const std::optional<int> key = keyPressCode(*static_cast<QKeyEvent*>(event)))
                if (!txtCompareTo_KeyPress(i, *key))
                    return true;
            break;
        default:
            break;
        }
    }
    return QDialog::eventFilter(watched, event);
}

// ---- small helpers ----------------------------------------------------------------------------------

bool frmFilter::HasField(int i) const
{
    const QComboBox* combo = imgcboFields[i];
    return combo && combo->currentIndex() >= 0 && !combo->currentData(KeyRole).toString().isEmpty();
}

std::optional<FilterFieldTag> frmFilter::selectedTag(int i) const
{
    const QComboBox* combo = imgcboFields[i];
    if (!combo || combo->currentIndex() < 0)
        return std::nullopt;
    const QVariant tag = combo->currentData(TagRole);
    if (!tag.canConvert<FilterFieldTag>())
        return std::nullopt;
    return tag.value<FilterFieldTag>();
}

FilterComparisonClasses frmFilter::rowClass(int i) const
{
    const std::optional<FilterFieldTag> tag = selectedTag(i);
    return tag && tag->live() ? tag->comparisonClass() : kvoCC_Unknown;
}

bool frmFilter::compareToValid(int i) const
{
    return txtCompareTo[i]->property("tag").toString() == kTrue;
}

void frmFilter::setCompareToValid(int i, bool valid)
{
    txtCompareTo[i]->setProperty("tag", valid ? kTrue : kFalse);
}

int frmFilter::rowOf(const QObject* control) const
{
    for (int i = 0; i < kRows; ++i)
        if (control && (control == cboConjunction[i] || control == imgcboFields[i] || control == cboComparison[i]
                        || control == txtCompareTo[i]))
            return i;
    return -1;
}

const Dialect& frmFilter::dialect() const
{
    return m_columns && m_columns->Handler() ? m_columns->Handler()->dialect() : Dialect::forKind(dbkSQLite);
}

} // namespace searchdata
