#include "config/frmColumnEdit.h"

#include "config/KeyMaskValidator.h"
#include "host/LanguageAdaptation.h"
#include "host/LibraryForms.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/Resources.h"
#include "searchdata/UiServices.h"
#include "searchdata/Validation.h"
#include "ui_frmColumnEdit.h"

#include <QPointer>

namespace searchdata {

namespace {

/// How far the name warning stands above its text box (240 twips).
constexpr int kWarningHeight = 16;
/// Longest default text of a note column.
constexpr int kNoteLength = 255;
/// The length a new keyword or text column starts with.
constexpr int kNewTextLength = 50;

bool hasSize(FilterColumnTypeConstants type)
{
    return type == fcKeyword || type == fcText;
}

/// Keyword, boolean and note columns take neither a picklist nor a default of their own.
bool takesPicklist(FilterColumnTypeConstants type)
{
    return type >= fcText && type <= fcDateTime;
}

bool isNumeric(FilterColumnTypeConstants type)
{
    return type >= fcInteger16 && type <= fcDouble;
}

Value::Type valueTypeOf(FilterColumnTypeConstants type)
{
    switch (type) {
    case fcInteger16:
        return Value::Type::Int16;
    case fcInteger32:
        return Value::Type::Int32;
    case fcSingle:
        return Value::Type::Single;
    default:
        return Value::Type::Double;
    }
}

/// A text as a number of a numeric column type, when it is one.
std::optional<double> numberOf(const QString& text, FilterColumnTypeConstants type)
{
    const Value value(text);
    if (!value.isNumeric())
        return std::nullopt;
    const Result<Value> converted = value.convertTo(valueTypeOf(type));
    if (!converted)
        return std::nullopt;
    const Result<double> number = converted.value().toDouble();
    return number ? std::optional<double>(number.value()) : std::nullopt;
}

bool sameDate(const QString& text, const Value& date)
{
    if (text.trimmed().isEmpty() || date.isBlank())
        return text.trimmed().isEmpty() && date.isBlank();
    const Result<QDateTime> typed = ParseDateText(text);
    const Result<QDateTime> stored = date.toDateTime();
    return typed && stored && typed.value() == stored.value();
}

} // namespace

frmColumnEdit::frmColumnEdit(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::frmColumnEdit>())
{
    ui->setupUi(this);
    RegisterLibraryForm(this);
    FormToJapanese(this);
    ui->lblName->setText(GetResourceText(7298));
    ui->lblType->setText(GetResourceText(7299));
    ui->lblSize->setText(GetResourceText(7300));
    ui->lblCaption->setText(GetResourceText(7301));
    ui->lblDescription->setText(GetResourceText(7302));
    ui->chkIsPicklist->setText(GetResourceText(7303));
    ui->chkPicklistBlank->setText(GetResourceText(7304));
    ui->kvooptDateDefault->setTitle(GetResourceText(7307));
    ui->kvooptDateDefault_0->setText(GetResourceText(9341));
    ui->kvooptDateDefault_1->setText(GetResourceText(9342));
    ui->chkDisableEditTime->setText(GetResourceText(7306));
    ui->cmdOk->setText(GetResourceText(8066));
    ui->cmdCancel->setText(GetResourceText(8073));

    CFilterColumn probe;
    for (int type = fcKeyword; type <= fcNote; ++type) {
        probe.setColumnType(static_cast<FilterColumnTypeConstants>(type));
        auto* item = new QListWidgetItem(probe.ColumnTypeName(), ui->lstType);
        item->setData(Qt::UserRole, type);
    }
    // Every type in sight, without scrolling.
    ui->lstType->setFixedHeight(ui->lstType->sizeHintForRow(0) * ui->lstType->count() + 2 * ui->lstType->frameWidth());
    ui->txtNoteDefault->setFixedHeight(ui->txtNoteDefault->fontMetrics().lineSpacing() * 4 + 2 * ui->txtNoteDefault->frameWidth());

    ui->txtName->setValidator(new KeyMaskValidator(QStringLiteral("ULDZ/_"), ui->txtName));
    ui->txtCaption->setValidator(new KeyMaskValidator(QStringLiteral("ULDZ/_ "), ui->txtCaption));
    QPalette warning = ui->lblWarning->palette();
    warning.setColor(QPalette::WindowText, QColor(255, 0, 0));
    ui->lblWarning->setPalette(warning);
    ui->lblWarning->setAlignment(Qt::AlignLeft | Qt::AlignBottom);

    for (QLineEdit* box : {ui->txtName, ui->txtCaption, ui->txtDescription, ui->txtDefault})
        connect(box, &QLineEdit::textChanged, this, &frmColumnEdit::ControlsUpdate);
    connect(ui->txtNoteDefault, &QPlainTextEdit::textChanged, this, [this] {
        const QString text = ui->txtNoteDefault->toPlainText();
        if (text.size() > kNoteLength) {
            ui->txtNoteDefault->setPlainText(text.left(kNoteLength));
            ui->txtNoteDefault->moveCursor(QTextCursor::End);
        }
        ControlsUpdate();
    });
    connect(ui->lstType, &QListWidget::currentRowChanged, this, &frmColumnEdit::ControlsUpdate);
    connect(ui->txtSize, &QSpinBox::valueChanged, this, &frmColumnEdit::ControlsUpdate);
    for (QAbstractButton* box :
         std::initializer_list<QAbstractButton*>{ui->chkIsPicklist, ui->chkPicklistBlank, ui->chkDisableEditTime, ui->kvooptDateDefault_0})
        connect(box, &QAbstractButton::toggled, this, &frmColumnEdit::ControlsUpdate);
    connect(ui->cmdOk, &QPushButton::clicked, this, &frmColumnEdit::cmdOk_Click);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &frmColumnEdit::reject);

    // Sized with every control in sight, so that the form keeps its size whatever the type shows.
    resize(sizeHint().expandedTo(size()));
    clearForm();
}

frmColumnEdit::~frmColumnEdit() = default;

CFilterColumns::ColumnPtr frmColumnEdit::MakeNew(CFilterColumns& columns, QPoint ownerTopLeft)
{
    SetupNew(columns, ownerTopLeft);
    const QPointer<frmColumnEdit> alive(this); // the clean-up of the library's windows may destroy it
    exec();
    return alive && m_changed ? m_column : nullptr;
}

bool frmColumnEdit::Edit(const ColumnPtr& column, CFilterColumns& columns, QPoint ownerTopLeft)
{
    SetupEdit(column, columns, ownerTopLeft);
    const QPointer<frmColumnEdit> alive(this); // the clean-up of the library's windows may destroy it
    exec();
    return alive && m_changed;
}

void frmColumnEdit::SetupNew(CFilterColumns& columns, QPoint ownerTopLeft)
{
    m_columns = &columns;
    clearForm();
    setWindowTitle(GetResourceText(7297));
    ui->txtName->setText(Column());
    placeAt(ownerTopLeft);
    ControlsUpdate();
}

void frmColumnEdit::SetupEdit(const ColumnPtr& column, CFilterColumns& columns, QPoint ownerTopLeft)
{
    m_columns = &columns;
    clearForm();
    m_column = column;
    if (column) {
        const FilterColumnTypeConstants type = column->ColumnType();
        ui->txtName->setText(column->Name());
        ui->txtCaption->setText(column->Caption());
        ui->txtDescription->setText(column->Description());
        ui->txtSize->setValue(column->TextLengthInUI());
        selectType(type);
        ui->chkIsPicklist->setChecked(column->IsPicklist());
        ui->chkPicklistBlank->setChecked(column->PicklistAllowBlanks());
        ui->chkDisableEditTime->setChecked(column->DisableEditDateTime());
        (column->DateTimeDefaultMode() == fcDTDM_Now ? ui->kvooptDateDefault_1 : ui->kvooptDateDefault_0)->setChecked(true);
        if (column->IsPicklist()) {
            ui->txtDefault->setText(column->PicklistDefault());
        } else if (type == fcDateTime) {
            const Value date = column->DateTimeDefaultValue();
            const Result<QDateTime> when = date.toDateTime();
            ui->txtDefault->setText(!date.isBlank() && when ? DateToText(when.value()) : QString());
        }
        if (type == fcNote)
            ui->txtNoteDefault->setPlainText(column->PicklistDefault());
        // The physical name and the type of a stored column are fixed.
        setNameAndTypeOpen(column->IsNew());
        setWindowTitle(GetResourceText(7296, {column->Name()}));
    }
    placeAt(ownerTopLeft);
    ControlsUpdate();
}

QString frmColumnEdit::Column() const
{
    const auto taken = [this](const QString& name) {
        if (!m_columns)
            return false;
        return std::any_of(m_columns->begin(), m_columns->end(), [&](const ColumnPtr& c) { return TextEquals(c->Name(), name, 1); });
    };
    for (int n = 1;; ++n) {
        const QString name = QStringLiteral("Column") + QString::number(n);
        if (!taken(name))
            return name;
    }
}

void frmColumnEdit::clearForm()
{
    m_column.reset();
    m_changed = false;
    for (QLineEdit* box : {ui->txtName, ui->txtCaption, ui->txtDescription, ui->txtDefault})
        box->clear();
    ui->txtNoteDefault->clear();
    ui->txtSize->setValue(kNewTextLength);
    selectType(fcText);
    ui->chkIsPicklist->setChecked(false);
    ui->chkPicklistBlank->setChecked(false);
    ui->chkDisableEditTime->setChecked(false);
    ui->kvooptDateDefault_0->setChecked(true);
    setNameAndTypeOpen(true);
    ValidateNameWarning(0);
}

void frmColumnEdit::setNameAndTypeOpen(bool open)
{
    for (QWidget* w : std::initializer_list<QWidget*>{ui->txtName, ui->lblName, ui->lstType, ui->lblType})
        w->setEnabled(open);
}

void frmColumnEdit::placeAt(QPoint ownerTopLeft)
{
    const int offset = qRound(UiServices::current().DialogOffset());
    move(ownerTopLeft + QPoint(offset, offset));
}

FilterColumnTypeConstants frmColumnEdit::selectedType() const
{
    const QListWidgetItem* item = ui->lstType->currentItem();
    return item ? static_cast<FilterColumnTypeConstants>(item->data(Qt::UserRole).toInt()) : fcUndefined;
}

void frmColumnEdit::selectType(FilterColumnTypeConstants type)
{
    for (int row = 0; row < ui->lstType->count(); ++row)
        if (ui->lstType->item(row)->data(Qt::UserRole).toInt() == type)
            ui->lstType->setCurrentRow(row);
}

bool frmColumnEdit::picklistChosen() const
{
    return takesPicklist(selectedType()) && ui->chkIsPicklist->isChecked();
}

bool frmColumnEdit::defaultShown() const
{
    // A default is stored for a picklist, and for a date of the fixed-date mode; other columns have
    // none to show.
    const FilterColumnTypeConstants type = selectedType();
    return takesPicklist(type) && (picklistChosen() || (type == fcDateTime && ui->kvooptDateDefault_0->isChecked()));
}

bool frmColumnEdit::defaultValid() const
{
    const QString text = ui->txtDefault->text().trimmed();
    const FilterColumnTypeConstants type = selectedType();
    switch (type) {
    case fcText:
        return !text.isEmpty() || ui->chkPicklistBlank->isChecked();
    case fcInteger16:
        return ValidNumber(text, true) && ValidInteger16(text);
    case fcInteger32:
        return ValidNumber(text, true) && ValidInteger32(text);
    case fcSingle:
        return ValidNumber(text, true) && ValidSingle(text);
    case fcDouble:
        return ValidNumber(text, true) && ValidDouble(text);
    case fcDateTime:
        return ValidDate(text, true) || (text.isEmpty() && !picklistChosen());
    default:
        return true;
    }
}

bool frmColumnEdit::somethingChanged() const
{
    if (!m_column)
        return true;
    const CFilterColumn& c = *m_column;
    const FilterColumnTypeConstants type = selectedType();
    if (ui->txtName->text().trimmed() != c.Name() || ui->txtCaption->text().trimmed() != c.Caption()
        || ui->txtDescription->text().trimmed() != c.Description() || type != c.ColumnType()
        || ui->chkIsPicklist->isChecked() != c.IsPicklist() || ui->chkPicklistBlank->isChecked() != c.PicklistAllowBlanks())
        return true;
    if (hasSize(type) && ui->txtSize->value() != c.TextLengthInUI())
        return true;
    const QString typedDefault = ui->txtDefault->text().trimmed();
    if (type == fcNote)
        return ui->txtNoteDefault->toPlainText().trimmed() != c.PicklistDefault();
    if (picklistChosen())
        return !ValueEqualsPicklistDefault(typedDefault, c);
    if (type == fcDateTime) {
        // The date settings count too: without them a change of the mode alone could not be taken.
        const auto mode = ui->kvooptDateDefault_1->isChecked() ? fcDTDM_Now : fcDTDM_Configure;
        if (mode != c.DateTimeDefaultMode())
            return true;
        return mode == fcDTDM_Configure ? !sameDate(typedDefault, c.DateTimeDefaultValue())
                                        : ui->chkDisableEditTime->isChecked() != c.DisableEditDateTime();
    }
    return false;
}

void frmColumnEdit::ControlsUpdate()
{
    const FilterColumnTypeConstants type = selectedType();
    const bool picklist = picklistChosen();
    const bool dateOptions = type == fcDateTime && !picklist;
    ui->lblSize->setVisible(hasSize(type));
    ui->txtSize->setVisible(hasSize(type));
    ui->chkIsPicklist->setVisible(takesPicklist(type));
    ui->kvooptDateDefault->setVisible(dateOptions);
    ui->chkDisableEditTime->setVisible(dateOptions && ui->kvooptDateDefault_1->isChecked());
    ui->chkPicklistBlank->setVisible(type == fcText && picklist);
    ui->txtDefault->setVisible(defaultShown());
    ui->txtNoteDefault->setVisible(type == fcNote);
    ui->lblDefault->setVisible(defaultShown() || type == fcNote);
    ui->lblDefault->setText(GetResourceText(type == fcNote                        ? 7311
                                            : picklist || type != fcDateTime ? 7305
                                                                               : 7310));
    const bool nameValid = ValidateName();
    ui->cmdOk->setEnabled(nameValid && somethingChanged() && (!defaultShown() || defaultValid()));
}

bool frmColumnEdit::ValidateName()
{
    const QString name = ui->txtName->text().trimmed();
    const QString caption = ui->txtCaption->text().trimmed();
    if (name.isEmpty()) {
        ValidateNameWarning(0);
        return false;
    }
    const auto clash = [this](int warning) {
        ValidateNameWarning(warning);
        return false;
    };
    // A keyword table numbers its rows in a field of this name; a stored column keeps the name it has.
    if ((!m_column || m_column->IsNew()) && TextEquals(name, CFilterColumns::KeywordOrder(), 1))
        return clash(7);
    if (m_columns && m_columns->BaseTable()) {
        for (const CatalogColumn& field : m_columns->BaseTable()->columns) {
            if (TextEquals(field.name, name, 1))
                return clash(1);
            if (TextEquals(field.name, caption, 1))
                return clash(2);
        }
    }
    if (m_columns) {
        for (const ColumnPtr& other : *m_columns) {
            if (other == m_column)
                continue;
            if (TextEquals(name, other->Name(), 1))
                return clash(3);
            if (TextEquals(caption, other->Name(), 1))
                return clash(4);
            if (!other->Caption().isEmpty()) {
                if (TextEquals(name, other->Caption(), 1))
                    return clash(5);
                if (TextEquals(caption, other->Caption(), 1))
                    return clash(6);
            }
        }
    }
    ValidateNameWarning(0);
    return true;
}

void frmColumnEdit::ValidateNameWarning(int warning)
{
    m_warning = warning >= 1 && warning <= 7 ? warning : 0;
    if (!m_warning) {
        ui->lblWarning->hide();
        return;
    }
    const QString table = m_columns ? m_columns->BaseTableName() : QString();
    ui->lblWarning->setText(GetResourceText(8161 + m_warning, {table}));
    placeWarning();
    ui->lblWarning->show();
    ui->lblWarning->raise();
}

void frmColumnEdit::placeWarning()
{
    if (!m_warning)
        return;
    const QWidget* field = m_warning % 2 ? ui->txtName : ui->txtCaption;
    const int right = width() - layout()->contentsMargins().right();
    ui->lblWarning->setGeometry(field->x(), field->y() - kWarningHeight, right - field->x(), kWarningHeight);
}

void frmColumnEdit::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    placeWarning();
}

void frmColumnEdit::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    placeWarning();
}

bool frmColumnEdit::ValidatePicklistSetting()
{
    if (!m_column || m_column->IsNew())
        return true;
    const bool picklist = ui->chkIsPicklist->isChecked();
    if (picklist == m_column->IsPicklist())
        return true;
    const QStringList args{m_columns ? m_columns->BaseTableName() : QString(), m_column->Name()};
    UiServices& services = UiServices::current();
    if (picklist) {
        services.ShowMessage(MessageKind::Information, Diagnostics::instance().caption(), GetResourceText(8161, args));
        return true;
    }
    return services.AskOkCancel(Diagnostics::instance().caption(), GetResourceText(8160, args), Answer::Ok) == Answer::Ok;
}

QString frmColumnEdit::FormatPicklistValue(const QString& text, const CFilterColumn& column)
{
    const FilterColumnTypeConstants type = column.ColumnType();
    if (type == fcKeyword || type == fcText || type == fcNote)
        return text.left(column.TextLengthInUI()).trimmed();
    if (isNumeric(type)) {
        const Result<Value> number = Value(text).convertTo(valueTypeOf(type));
        return Value(text).isNumeric() && number ? number.value().text() : QString();
    }
    if (type == fcDateTime) {
        const Result<QDateTime> date = ParseDateText(text);
        return date ? date.value().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) : QString();
    }
    return text;
}

bool frmColumnEdit::ValueEqualsPicklistDefault(const QString& text, const CFilterColumn& column)
{
    const QString stored = column.PicklistDefault();
    if (stored.trimmed().isEmpty())
        return text.trimmed().isEmpty();
    const FilterColumnTypeConstants type = column.ColumnType();
    if (isNumeric(type)) {
        const std::optional<double> typed = numberOf(text, type);
        const std::optional<double> kept = numberOf(stored, type);
        if (typed && kept)
            return *typed == *kept;
    } else if (type == fcDateTime) {
        const Result<QDateTime> typed = ParseDateText(text);
        const Result<QDateTime> kept = ParseDateText(stored);
        if (typed && kept)
            return typed.value() == kept.value();
    }
    return text == stored;
}

void frmColumnEdit::cmdOk_Click()
{
    const QString name = ui->txtName->text().trimmed();
    const QString caption = ui->txtCaption->text().trimmed();
    const QString description = ui->txtDescription->text().trimmed();
    const FilterColumnTypeConstants type = selectedType();
    const qint16 size = hasSize(type) ? static_cast<qint16>(ui->txtSize->value()) : type == fcNote ? kNoteLength : 0;

    bool picklist = false;
    bool allowBlanks = false;
    if (takesPicklist(type)) {
        if (!ValidatePicklistSetting())
            return;
        picklist = ui->chkIsPicklist->isChecked();
        allowBlanks = picklist && ui->chkPicklistBlank->isChecked();
    }

    if (!m_column) {
        if (!m_columns)
            return;
        m_column = m_columns->Add(name, caption, description, type, size, picklist, allowBlanks);
        if (!m_column)
            return;
        m_column->setIsNew(true);
    }
    CFilterColumn& column = *m_column;
    if (column.IsNew()) {
        column.setName(name);
        column.setColumnType(type);
    }
    column.setCaption(caption);
    column.setDescription(description);
    column.setTextLengthInUI(size);
    column.setIsPicklist(picklist);
    column.setPicklistAllowBlanks(allowBlanks);
    if (picklist) {
        column.setPicklistDefault(FormatPicklistValue(ui->txtDefault->text().trimmed(), column));
    } else {
        column.setPicklistDefault(QString());
        if (type == fcDateTime) {
            if (ui->kvooptDateDefault_1->isChecked()) {
                column.setDateTimeDefaultMode(fcDTDM_Now);
                column.setDateTimeDefaultValue(Value::null());
                column.setDisableEditDateTime(ui->chkDisableEditTime->isChecked());
            } else {
                const Result<QDateTime> date = ParseDateText(ui->txtDefault->text().trimmed());
                column.setDateTimeDefaultMode(fcDTDM_Configure);
                column.setDateTimeDefaultValue(date ? Value(date.value()) : Value::null());
                column.setDisableEditDateTime(false);
            }
        } else if (type == fcNote) {
            column.setPicklistDefault(ui->txtNoteDefault->toPlainText().trimmed());
        }
    }
    m_changed = true;
    accept();
}

} // namespace searchdata
