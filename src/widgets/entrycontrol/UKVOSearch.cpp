// The entry control's surface, its persisted properties and its life from creation to close.

#include "UKVOSearch_p.h"

#include "host/LanguageAdaptation.h"
#include "platform/Guard_p.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/Resources.h"
#include "searchdata/widgets/AboutBox.h"
#include "searchdata/widgets/PropertyStore.h"

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStatusBar>
#include <QTimer>
#include <QTreeWidget>
#include <optional>

namespace searchdata {

namespace {

constexpr char kModule[] = "KVOSearchEdit";

/// A stored boolean as a property store gives it back: a boolean, a number, or its text.
std::optional<bool> storedBoolean(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return value.toLongLong() != 0;
    case QMetaType::QString: {
        const QString text = value.toString().trimmed();
        if (text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0)
            return true;
        if (text.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0)
            return false;
        bool ok = false;
        const qlonglong number = text.toLongLong(&ok);
        if (ok)
            return number != 0;
        return std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

/// A stored 16-bit integer; none for any other value.
std::optional<qint16> storedInt16(const QVariant& value)
{
    bool ok = false;
    const qlonglong number = value.typeId() == QMetaType::QString ? value.toString().trimmed().toLongLong(&ok) : value.toLongLong(&ok);
    if (!ok || value.typeId() == QMetaType::Bool || number < -32768 || number > 32767)
        return std::nullopt;
    return qint16(number);
}

/// Sets the wait cursor for a long operation, and puts the former cursor back at its end.
class WaitCursor {
public:
    WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
};

} // namespace

// ---- the private part ----------------------------------------------------------------------------

UKVOSearchPrivate::UKVOSearchPrivate(UKVOSearch* control) : q(control) {}

UKVOSearchPrivate::~UKVOSearchPrivate()
{
    // A host may keep the search after the control goes; its columns must not keep our adapters.
    if (CFilterColumns* cols = columns())
        for (const ColumnPtr& column : *cols)
            column->unbindControls();
}

void UKVOSearchPrivate::makeSurface()
{
    picContainer = new detail::Surface(q);
    picContainer->setObjectName(QStringLiteral("picContainer"));
    QWidget* surface = picContainer->client();

    lblEntry = new QLabel(surface);
    lblEntry->setObjectName(QStringLiteral("lblEntry"));
    lvwEntry = new QTreeWidget(surface);
    lvwEntry->setObjectName(QStringLiteral("lvwEntry"));
    lvwEntry->setRootIsDecorated(false);
    lvwEntry->setItemsExpandable(false);
    lvwEntry->setSelectionMode(QAbstractItemView::NoSelection);
    lvwEntry->header()->setStretchLastSection(false);
    lvwEntry->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    lvwEntry->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);

    picView = new detail::Surface(surface);
    picView->setObjectName(QStringLiteral("picView"));
    picFields = new detail::Surface(picView->client());
    picFields->setObjectName(QStringLiteral("picFields"));
    vsbFields = new QScrollBar(Qt::Vertical, picView->client());
    vsbFields->setObjectName(QStringLiteral("vsbFields"));
    vsbFields->setRange(0, 100);
    QObject::connect(vsbFields, &QScrollBar::valueChanged, q, [this](int value) { repositionFields(float(value)); });

    picStatus = new detail::Surface(surface);
    picStatus->setObjectName(QStringLiteral("picStatus"));
    txtStatus = new QLineEdit(picStatus->client());
    txtStatus->setObjectName(QStringLiteral("txtStatus"));
    txtStatus->setReadOnly(true);
    txtStatus->setFocusPolicy(Qt::NoFocus);

    sbrStatus = new QStatusBar(surface);
    sbrStatus->setObjectName(QStringLiteral("sbrStatus"));
    sbrStatus->setSizeGripEnabled(false);
    for (int i = 0; i < 2; ++i) {
        statusPanels[i] = new QLabel(sbrStatus);
        statusPanels[i]->setObjectName(QStringLiteral("sbrStatusPanel_%1").arg(i + 1));
        statusPanels[i]->setMinimumWidth(25);
        statusPanels[i]->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
        statusPanels[i]->setMargin(1);
        sbrStatus->addWidget(statusPanels[i]);
        statusPanels[i]->hide();
    }

    tmrUpdate = new QTimer(q);
    tmrUpdate->setObjectName(QStringLiteral("tmrUpdate"));
    tmrUpdate->setSingleShot(true);
    tmrUpdate->setTimerType(Qt::PreciseTimer);
    QObject::connect(tmrUpdate, &QTimer::timeout, q, [this] { testControlsUpdate(); });

    const auto button = [&](const char* name, void (UKVOSearchPrivate::*handler)()) {
        auto* b = new QPushButton(surface);
        b->setObjectName(QString::fromLatin1(name));
        b->setAutoDefault(false);
        QObject::connect(b, &QPushButton::clicked, q, [this, handler] { (this->*handler)(); });
        return b;
    };
    cmdOk = button("cmdOk", &UKVOSearchPrivate::cmdOkClick);
    cmdEdit = button("cmdEdit", &UKVOSearchPrivate::cmdEditClick);
    cmdApply = button("cmdApply", &UKVOSearchPrivate::cmdApplyClick);
    cmdReset = button("cmdReset", &UKVOSearchPrivate::cmdResetClick);
    cmdClear = button("cmdClear", &UKVOSearchPrivate::cmdClearClick);
    cmdCancel = button("cmdCancel", &UKVOSearchPrivate::cmdCancelClick);
    cmdTemplateCopy = button("cmdTemplateCopy", &UKVOSearchPrivate::cmdTemplateCopyClick);
    cmdTemplatePaste = button("cmdTemplatePaste", &UKVOSearchPrivate::cmdTemplatePasteClick);
    okButton = std::make_unique<detail::ButtonAdapter>(cmdOk, &defaultButton);
    applyButton = std::make_unique<detail::ButtonAdapter>(cmdApply, &defaultButton);

    // A closed control shows nothing but its frame; opening and the first record bring the rest.
    for (QWidget* w : std::initializer_list<QWidget*>{lblEntry, lvwEntry, picView, vsbFields, picStatus, sbrStatus, cmdOk, cmdEdit,
                                                      cmdApply, cmdReset, cmdClear, cmdCancel, cmdTemplateCopy, cmdTemplatePaste})
        w->hide();
}

void UKVOSearchPrivate::makeRowTemplates()
{
    using namespace detail;
    QWidget* rows = picFields->client();
    const auto comboAdapter = [](QComboBox* c) { return std::make_unique<ComboBoxAdapter>(c); };

    cboField = std::make_unique<ControlArray<QComboBox, ComboBoxAdapter>>(
        QStringLiteral("cboField"), rows,
        [this](QWidget* parent) {
            auto* combo = new QComboBox(parent);
            combo->setEditable(true);
            combo->setInsertPolicy(QComboBox::NoInsert);
            combo->setCompleter(nullptr);
            combo->setDuplicatesEnabled(true);
            connectComboField(combo);
            return combo;
        },
        comboAdapter);
    cboFieldView = std::make_unique<ControlArray<QComboBox, ComboBoxAdapter>>(
        QStringLiteral("cboFieldView"), rows,
        [this](QWidget* parent) {
            auto* combo = new QComboBox(parent);
            connectComboView(combo);
            return combo;
        },
        comboAdapter);
    chkField = std::make_unique<ControlArray<QCheckBox, CheckBoxAdapter>>(
        QStringLiteral("chkField"), rows,
        [this](QWidget* parent) {
            auto* box = new QCheckBox(parent);
            connectCheckField(box);
            return box;
        },
        [](QCheckBox* b) { return std::make_unique<CheckBoxAdapter>(b); });
    const auto rowButton = [this, rows](const QString& name, void (UKVOSearchPrivate::*handler)(QPushButton*)) {
        return std::make_unique<ControlArray<QPushButton, ButtonAdapter>>(
            name, rows,
            [this, handler](QWidget* parent) {
                auto* b = new QPushButton(parent);
                QObject::connect(b, &QPushButton::clicked, q, [this, handler, b] { (this->*handler)(b); });
                return b;
            },
            [this](QPushButton* b) { return std::make_unique<ButtonAdapter>(b, &defaultButton); });
    };
    cmdAdd = rowButton(QStringLiteral("cmdAdd"), &UKVOSearchPrivate::cmdAddClick);
    cmdNow = rowButton(QStringLiteral("cmdNow"), &UKVOSearchPrivate::cmdNowClick);
    cmdRemove = rowButton(QStringLiteral("cmdRemove"), &UKVOSearchPrivate::cmdRemoveClick);
    lblField = std::make_unique<ControlArray<QLabel, LabelAdapter>>(
        QStringLiteral("lblField"), rows, [](QWidget* parent) { return new QLabel(parent); },
        [](QLabel* l) { return std::make_unique<LabelAdapter>(l); });
    picLine = std::make_unique<ControlArray<LinePanel, NoAdapter>>(
        QStringLiteral("picLine"), picContainer->client(), [](QWidget* parent) { return new LinePanel(parent); },
        [](LinePanel* l) { return std::make_unique<NoAdapter>(l); });
    txtTextField = std::make_unique<ControlArray<QLineEdit, TextBoxAdapter>>(
        QStringLiteral("txtTextField"), rows,
        [this](QWidget* parent) {
            auto* box = new QLineEdit(parent);
            connectTextField(box);
            return box;
        },
        [](QLineEdit* e) { return std::make_unique<TextBoxAdapter>(e); });
    txtNoteField = std::make_unique<ControlArray<QPlainTextEdit, TextBoxAdapter>>(
        QStringLiteral("txtNoteField"), rows,
        [this](QWidget* parent) {
            auto* box = new QPlainTextEdit(parent);
            box->setTabChangesFocus(true);
            connectNoteField(box);
            return box;
        },
        [](QPlainTextEdit* e) { return std::make_unique<TextBoxAdapter>(e); });
}

void UKVOSearchPrivate::setCaptions()
{
    cmdOk->setText(GetResourceText(8066));
    cmdApply->setText(GetResourceText(8067));
    cmdReset->setText(GetResourceText(8064));
    cmdCancel->setText(GetResourceText(8073));
    cmdClear->setText(GetResourceText(8076));
    cmdTemplateCopy->setText(GetResourceText(8081));
    cmdTemplatePaste->setText(GetResourceText(8082));
    cmdEdit->setText(GetResourceText(8070));
}

void UKVOSearchPrivate::sizeTemplates()
{
    // The sizes a form designer would have given the templates, taken from the font, so that every
    // gap of the layout follows the font and the screen's scaling.
    const int lineHeight = QFontMetrics(q->font()).height();
    QLabel* label = lblField->item(0);
    label->setProperty("autoSize", true);
    label->resize(label->width(), lineHeight);
    lblEntry->resize(lblEntry->width(), lineHeight);

    QLineEdit* text = txtTextField->item(0);
    const int boxHeight = text->sizeHint().height();
    text->resize(text->width(), boxHeight);
    txtNoteField->item(0)->resize(txtNoteField->item(0)->width(), boxHeight + 2 * QFontMetrics(q->font()).lineSpacing());
    for (QComboBox* combo : {cboField->item(0), cboFieldView->item(0)})
        combo->resize(combo->width(), combo->sizeHint().height());
    chkField->item(0)->resize(chkField->item(0)->width(), chkField->item(0)->sizeHint().height());

    const std::initializer_list<QPushButton*> column = {cmdOk, cmdEdit, cmdApply, cmdReset, cmdClear, cmdCancel, cmdTemplateCopy, cmdTemplatePaste};
    QSize buttonSize;
    for (QPushButton* b : column)
        buttonSize = buttonSize.expandedTo(b->sizeHint());
    for (QPushButton* b : column)
        b->resize(buttonSize);

    sbrStatus->resize(sbrStatus->width(), sbrStatus->sizeHint().height());
    txtStatus->resize(txtStatus->width(), txtStatus->sizeHint().height());
    picStatus->resize(picStatus->width(), picStatus->borderHeight() + txtStatus->height());
    vsbFields->resize(vsbFields->sizeHint().width(), vsbFields->height());
    // The base record: a header and one row, with room for the horizontal scroll bar.
    lvwEntry->resize(lvwEntry->width(), lvwEntry->header()->sizeHint().height() + lineHeight + 6 + 2 * lvwEntry->frameWidth()
                                            + lvwEntry->horizontalScrollBar()->sizeHint().height());
}

void UKVOSearchPrivate::markChanged(const char* name)
{
    emit q->PropertyChanged(QString::fromLatin1(name));
}

void UKVOSearchPrivate::controlSetup()
{
    SD_PROC("ControlSetup");
    CFilterColumns* cols = columns();
    if (!cols)
        return;
    if (legacyOkCancel)
        markChanged("OkCancelButtons");
    cols->GetData(sourceEntry);
    if (!controlReady) {
        setupBaseControls();
        setupListView();
        setupDataEntryFields();
        picFields->setBorderStyle(0);
        controlsArrange();
        calculateMinimumHeight();
        tabOrder();
        controlReady = true;
    }
    resetData();
}

void UKVOSearchPrivate::resetData()
{
    if (CFilterColumns* cols = columns())
        for (const ColumnPtr& column : *cols)
            column->ResetData();
    setDirty(false);
    scheduleControlsUpdate();
}

void UKVOSearchPrivate::saveData()
{
    if (CFilterColumns* cols = columns())
        cols->SaveDataFromEditControl(sourceEntry);
    setDirty(false);
    scheduleControlsUpdate();
}

void UKVOSearchPrivate::clearData()
{
    CFilterColumns* cols = columns();
    if (!cols)
        return;
    bool cleared = false;
    for (const ColumnPtr& column : *cols) {
        if (!column->IsBlank()) {
            column->ClearValue();
            setDirty(true);
            cleared = true;
        }
    }
    if (cleared)
        scheduleControlsUpdate();
}

bool UKVOSearchPrivate::isClear() const
{
    if (const CFilterColumns* cols = columns())
        for (const ColumnPtr& column : *cols)
            if (!column->IsBlank())
                return false;
    return true;
}

void UKVOSearchPrivate::closeSearch()
{
    if (isEditing)
        cmdCancelClick();
    controlReady = false;
    if (CFilterColumns* cols = columns())
        for (const ColumnPtr& column : *cols)
            column->unbindControls();
    filter.reset();
    container.reset();
    sourceRecordset = nullptr;
    sourceEntry = nullptr;
    cboField->unloadRunTimeMembers();
    cboFieldView->unloadRunTimeMembers();
    chkField->unloadRunTimeMembers();
    cmdAdd->unloadRunTimeMembers();
    cmdNow->unloadRunTimeMembers();
    cmdRemove->unloadRunTimeMembers();
    lblField->unloadRunTimeMembers();
    picLine->unloadRunTimeMembers();
    txtTextField->unloadRunTimeMembers();
    txtNoteField->unloadRunTimeMembers();
    // The templates stay, hidden as they were designed.
    for (QWidget* w : std::initializer_list<QWidget*>{cboField->item(0), cboFieldView->item(0), chkField->item(0), cmdAdd->item(0),
                                                      cmdNow->item(0), cmdRemove->item(0), lblField->item(0), picLine->item(0),
                                                      txtTextField->item(0), txtNoteField->item(0)})
        w->hide();
}

// ---- the control ---------------------------------------------------------------------------------

UKVOSearch::UKVOSearch(QWidget* parent) : QWidget(parent), d(std::make_unique<UKVOSearchPrivate>(this))
{
    d->makeSurface();
    d->makeRowTemplates();
    d->setCaptions();
    d->sizeTemplates();
    InitProperties();
    UserControlToJapanese(this);
}

UKVOSearch::~UKVOSearch()
{
    // The widgets go while the state that their events reach is still whole.
    d->destroying = true;
    delete d->picContainer;
}

void UKVOSearch::InitProperties()
{
    SD_PROC("UserControl_InitProperties");
    SetEnabled(true);
    SetShowOKButton(true);
    SetShowCancelButton(true);
    SetDisplayBaseRecord(true);
    SetBorderStyle(0);
    SetFieldsVisible(0);
    d->sizeSetup();
}

void UKVOSearch::ReadProperties(const IPropertyStore& store)
{
    SD_PROC("UserControl_ReadProperties");
    d->setCaptions();
    d->clearStatusPanels();

    // Each property recovers on its own: one that cannot be read or set takes its default.
    const auto readBoolean = [&](const char* key, void (UKVOSearch::*setter)(bool)) {
        const std::optional<bool> value = storedBoolean(store.ReadProperty(QString::fromLatin1(key), true));
        (this->*setter)(value.value_or(true));
    };
    readBoolean("Enabled", &UKVOSearch::SetEnabled);
    // An older setting that no longer decides anything; a value other than True is only cleared away.
    d->legacyOkCancel = !storedBoolean(store.ReadProperty(QStringLiteral("OkCancelButtons"), true)).value_or(true);
    readBoolean("ShowCancelButton", &UKVOSearch::SetShowCancelButton);
    readBoolean("ShowOKButton", &UKVOSearch::SetShowOKButton);
    readBoolean("DisplayBaseRecord", &UKVOSearch::SetDisplayBaseRecord);
    const std::optional<qint16> border = storedInt16(store.ReadProperty(QStringLiteral("BorderStyle"), 0));
    SetBorderStyle(border == 0 || border == 1 ? *border : qint16(0));
    SetFieldsVisible(storedInt16(store.ReadProperty(QStringLiteral("FieldsVisible"), 0)).value_or(0));
    d->sizeSetup();
}

void UKVOSearch::WriteProperties(IPropertyStore& store) const
{
    SD_PROC("UserControl_WriteProperties");
    store.WriteProperty(QStringLiteral("Enabled"), Enabled(), true);
    if (d->legacyOkCancel)
        store.WriteProperty(QStringLiteral("OkCancelButtons"), true, true);
    store.WriteProperty(QStringLiteral("ShowOKButton"), d->showOKButton, true);
    store.WriteProperty(QStringLiteral("ShowCancelButton"), d->showCancelButton, true);
    store.WriteProperty(QStringLiteral("DisplayBaseRecord"), d->displayBaseRecord, true);
    store.WriteProperty(QStringLiteral("BorderStyle"), d->borderStyle, qint16(0));
    store.WriteProperty(QStringLiteral("FieldsVisible"), d->fieldsVisible, qint16(0));
}

QPixmap UKVOSearch::BitmapLarge(FilterMenuItems enmBitmapId) const
{
    QPixmap picture;
    picture.loadFromData(CSearchFilter().BitmapLarge(enmBitmapId), "PNG");
    return picture;
}

QPixmap UKVOSearch::BitmapSmall(FilterMenuItems enmBitmapId) const
{
    QPixmap picture;
    picture.loadFromData(CSearchFilter().BitmapSmall(enmBitmapId), "PNG");
    return picture;
}

qint16 UKVOSearch::BorderStyle() const
{
    return d->borderStyle;
}

void UKVOSearch::SetBorderStyle(qint16 value)
{
    SD_PROC("BorderStyle");
    SD_GUARDED([&] {
        if (value != 0 && value != 1)
            detail::fail(QStringLiteral("BorderStyle %1 is neither 0 nor 1").arg(value));
        d->borderStyle = value;
        d->picContainer->setBorderStyle(value);
        d->markChanged("BorderStyle");
    });
}

void UKVOSearch::CloseSearch()
{
    SD_PROC("CloseSearch");
    d->closeSearch();
}

bool UKVOSearch::IsDirty() const
{
    return d->isDirty;
}

void UKVOSearch::Display(Recordset* rstSource, ISearchBaseEntry* oSource, KVOSearchEditExamineModes enmMode)
{
    SD_PROC("Display");
    if (!d->filter)
        return;
    if (d->isEditing) {
        if (enmMode != kseModeEdit) {
            d->cmdCancelClick();
        } else {
            const detail::ProcScope note("Display: the edit session stays", kModule);
        }
    }
    d->sourceRecordset = rstSource;
    d->sourceEntry = oSource;
    d->setEditMode(enmMode);
    d->controlSetup();
    if (d->container)
        d->container->SizeMin();
    d->userControlResize();
}

bool UKVOSearch::DisplayBaseRecord() const
{
    return d->displayBaseRecord;
}

void UKVOSearch::SetDisplayBaseRecord(bool value)
{
    d->displayBaseRecord = value;
    d->markChanged("DisplayBaseRecord");
}

KVOSearchEditExamineModes UKVOSearch::EditMode() const
{
    return d->editMode;
}

bool UKVOSearch::Enabled() const
{
    return !testAttribute(Qt::WA_ForceDisabled);
}

void UKVOSearch::SetEnabled(bool value)
{
    setEnabled(value);
    d->markChanged("Enabled");
}

bool UKVOSearch::Exists() const
{
    return d->filter && d->filter->Exists();
}

qint16 UKVOSearch::FieldsVisible() const
{
    return d->fieldsVisible;
}

void UKVOSearch::SetFieldsVisible(qint16 value)
{
    d->fieldsVisible = value;
    d->markChanged("FieldsVisible");
}

float UKVOSearch::HeightMin() const
{
    return d->heightMin;
}

bool UKVOSearch::IsEditing() const
{
    return d->isEditing;
}

std::shared_ptr<CSearchFilter> UKVOSearch::MyFilter() const
{
    return d->filter;
}

bool UKVOSearch::OpenSearch(std::shared_ptr<IContainer> obj, std::shared_ptr<DatabaseHandler> roHandler,
                            std::shared_ptr<ISearchBaseTable> roBaseTable, std::shared_ptr<Catalog> roCatalog,
                            std::shared_ptr<IProfile> roProfile, int enmConvertMode, std::shared_ptr<TableStructure> roBaseStructure)
{
    SD_PROC("OpenSearch");
    const WaitCursor wait;
    SD_GUARDED([&] {
        d->closeSearch();
        auto filter = std::make_shared<CSearchFilter>();
        filter->OpenSearch(std::move(roHandler), std::move(roBaseTable), std::move(roCatalog), std::move(roProfile), enmConvertMode,
                           std::move(roBaseStructure));
        const std::shared_ptr<CFilterColumns>& cols = filter->FilterColumns();
        if (cols && obj && cols->Catalog() && cols->BaseTable()) {
            d->filter = std::move(filter);
            d->container = std::move(obj);
        }
    });
    return d->filter && d->container;
}

void UKVOSearch::Refresh()
{
    update();
}

void UKVOSearch::ResetData()
{
    SD_PROC("ResetData");
    d->resetData();
}

void UKVOSearch::SaveData()
{
    SD_PROC("SaveData");
    d->saveData();
}

void UKVOSearch::ShowAboutBox()
{
    OpenAboutBox(this);
}

bool UKVOSearch::ShowCancelButton() const
{
    return d->showCancelButton;
}

void UKVOSearch::SetShowCancelButton(bool value)
{
    d->showCancelButton = value;
    d->markChanged("ShowCancelButton");
    d->controlsArrange();
    d->scheduleControlsUpdate();
}

bool UKVOSearch::ShowOKButton() const
{
    return d->showOKButton;
}

void UKVOSearch::SetShowOKButton(bool value)
{
    d->showOKButton = value;
    d->markChanged("ShowOKButton");
    d->scheduleControlsUpdate();
}

QString UKVOSearch::SQLSearchFields() const
{
    return Exists() ? d->filter->SQLSearchFields() : QString();
}

QString UKVOSearch::SQLSearchJoinOn() const
{
    return Exists() ? d->filter->SQLSearchJoinOn() : QString();
}

QString UKVOSearch::SQLSearchTable() const
{
    return Exists() ? d->filter->SQLSearchTable() : QString();
}

QString UKVOSearch::StandardCaption(FilterMenuItems enmCaptionId) const
{
    return CSearchFilter().StandardCaption(enmCaptionId);
}

float UKVOSearch::WidthMin() const
{
    return d->widthMin;
}

void UKVOSearch::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    d->userControlResize();
}

void UKVOSearch::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        d->textWidths.clear();
        d->sizeTemplates();
        d->sizeSetup();
    }
}

void UKVOSearch::keyPressEvent(QKeyEvent* event)
{
    // Enter presses the default button and Escape the cancel button, wherever the focus is.
    QPushButton* target = nullptr;
    if (event->modifiers() == Qt::NoModifier || event->modifiers() == Qt::KeypadModifier) {
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
            target = d->defaultButton;
        else if (event->key() == Qt::Key_Escape)
            target = d->cancelButton;
    }
    if (target && !target->isHidden() && target->isEnabled()) {
        target->click();
        event->accept();
        return;
    }
    QWidget::keyPressEvent(event);
}

bool UKVOSearch::eventFilter(QObject* watched, QEvent* event)
{
    return d->fieldEvent(watched, event) || QWidget::eventFilter(watched, event);
}

} // namespace searchdata
