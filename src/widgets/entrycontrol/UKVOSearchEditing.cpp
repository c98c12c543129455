// Editing in the entry control: the edit session with the host's consent, what each key, field
// event and button does, and the state of the buttons, recomputed once things are quiet.

#include "UKVOSearch_p.h"

#include "host/KeyPress.h"
#include "platform/Guard_p.h"
#include "searchdata/Resources.h"
#include "searchdata/UiServices.h"
#include "searchdata/Validation.h"
#include "searchdata/Value.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QScrollBar>
#include <QStatusBar>
#include <QTimer>

namespace searchdata {

using namespace detail;

namespace {

constexpr char kModule[] = "KVOSearchEdit";

// Each request to update the buttons waits this long for the next one.
constexpr int kUpdateDelayMs = 200;

/// The text of a valid field as its type writes it: "007" becomes "7".
QString normalText(FilterColumnTypeConstants type, const QString& trimmed)
{
    Value::Type target;
    switch (type) {
    case fcInteger16: target = Value::Type::Int16; break;
    case fcInteger32: target = Value::Type::Int32; break;
    case fcSingle: target = Value::Type::Single; break;
    case fcDouble: target = Value::Type::Double; break;
    case fcDateTime: target = Value::Type::DateTime; break;
    default: return trimmed;
    }
    const Result<Value> converted = Value(trimmed).convertTo(target);
    return converted ? converted.value().text() : trimmed;
}

} // namespace

// ---- the edit session and the update of the buttons -------------------------------------------

void UKVOSearchPrivate::setIsEditing(bool value)
{
    SD_PROC("IsEditing");
    if (value == isEditing || (value && !filter))
        return;
    bool accepted = !value;
    if (value)
        emit q->OnStartEditing(sourceEntry, &accepted);
    else
        emit q->OnCompleteEditing(sourceEntry);
    if (!accepted)
        return;
    controlReady = false;
    isEditing = value;
    // A session shows Cancel; after it, Cancel is hidden, whatever the host had chosen.
    q->SetShowCancelButton(value);
    controlSetup();
    scheduleControlsUpdate();
    if (container)
        container->SizeMin();
    userControlResize();
    emit q->Changed();
}

void UKVOSearchPrivate::scheduleControlsUpdate()
{
    updatePending = true;
    tmrUpdate->start(kUpdateDelayMs);
}

void UKVOSearchPrivate::valueChanged()
{
    setDirty(true);
    scheduleControlsUpdate();
}

void UKVOSearchPrivate::testControlsUpdate()
{
    if (!updatePending)
        return;
    updatePending = false;
    runControlsUpdate();
}

void UKVOSearchPrivate::runControlsUpdate()
{
    SD_PROC("RunControlsUpdate");
    CFilterColumns* cols = columns();
    if (!cols)
        return;
    okButton->SetDefault(false);
    if (cancelButton == cmdCancel)
        cancelButton = nullptr;
    cmdOk->setVisible(showOKButton && editing());
    cmdCancel->setVisible(showCancelButton);
    if (showCancelButton)
        cmdCancel->setEnabled(true);

    // An enabled list button of a valid row takes the Enter key from Apply.
    bool allValid = false;
    bool listButtonActive = false;
    for (const ColumnPtr& column : *cols) {
        allValid = column->IsValid();
        if (!allValid)
            break;
        for (IButtonControl* button : {column->MyAddButton(), column->MyDefaultButton()}) {
            if (button && button->Enabled()) {
                listButtonActive = true;
                applyButton->SetDefault(false);
                button->SetDefault(true);
            }
        }
    }

    cmdEdit->setVisible(editMode == kseModeEdit && !isEditing);
    const bool applyVisible = editing();
    for (QPushButton* b : {cmdApply, cmdReset, cmdClear, cmdTemplatePaste, cmdTemplateCopy})
        b->setVisible(applyVisible);

    // The message panel is drawn once and kept hidden: it holds its text, and shows nothing.
    if (!allValid && !messagePanel) {
        const QString message = GetResourceText(7681, {cols->BaseTableName()});
        if (!message.isEmpty()) {
            messagePanel = lineItem(2);
            messagePanel->setGeometry(0, 0, q->width(), q->height());
            messagePanel->show();
            QFont bold = messagePanel->font();
            bold.setBold(true);
            messagePanel->setFont(bold);
            messagePanel->setFrameStyle(QFrame::NoFrame);
            messagePanel->setText(message);
            messagePanel->hide();
        }
    }
    if (allValid && messagePanel) {
        messagePanel->hide();
        messagePanel = nullptr;
    }

    if (!applyVisible) {
        if (!cmdCancel->isHidden()) {
            cmdCancel->setEnabled(true);
            cancelButton = cmdCancel;
        }
        return;
    }
    const bool applyEnabled = isDirty && allValid;
    cmdApply->setEnabled(applyEnabled);
    if (applyButton->Default() && !applyEnabled)
        applyButton->SetDefault(false);
    cmdReset->setEnabled(isDirty);
    if (!cmdOk->isHidden())
        cmdOk->setEnabled(applyEnabled);
    cmdClear->setEnabled(!isClear());
    if (applyEnabled)
        applyButton->SetDefault(!listButtonActive);
    else if (!cmdOk->isHidden() && okButton->Enabled())
        okButton->SetDefault(!listButtonActive);
    // While there are changes, Escape resets rather than cancels.
    if (cmdReset->isEnabled())
        cancelButton = cmdReset;
    else if (!cmdCancel->isHidden() && cmdCancel->isEnabled())
        cancelButton = cmdCancel;
    cmdTemplateCopy->setEnabled(!isDirty && allValid);
    cmdTemplatePaste->setEnabled(true);
}

// ---- the status message and the status bar --------------------------------------------------------

void UKVOSearchPrivate::updateStatus(const QString& text)
{
    txtStatus->setText(text.trimmed());
    const bool hasText = !txtStatus->text().isEmpty();
    if (hasText == picStatus->isHidden())
        controlsArrange();
}

void UKVOSearchPrivate::clearStatusPanels()
{
    for (QLabel* panel : statusPanels) {
        panel->clear();
        panel->hide();
    }
    statusPanelCount = 0;
}

void UKVOSearchPrivate::addStatusPanel(const QString& text)
{
    if (statusPanelCount >= 2)
        return;
    QLabel* panel = statusPanels[statusPanelCount++];
    panel->setText(text);
    panel->show();
}

void UKVOSearchPrivate::prompts(const CFilterColumn& column)
{
    clearStatusPanels();
    if (const QString prompt = column.ValidationPrompt(); !prompt.isEmpty())
        addStatusPanel(prompt);
    if (const QString description = column.Description(); !description.isEmpty())
        addStatusPanel(description);

    int invalid = 0;
    if (const CFilterColumns* cols = columns())
        for (const ColumnPtr& c : *cols)
            if (!c->IsValid())
                ++invalid;
    const bool thisInvalid = !column.IsValid();
    QString text;
    if (invalid == 1)
        text = GetResourceText(thisInvalid ? 7682 : 7683);
    else if (invalid >= 2 && !thisInvalid)
        text = GetResourceText(7686, {QString::number(invalid)});
    else if (invalid == 2)
        text = GetResourceText(7684);
    else if (invalid >= 3)
        text = GetResourceText(7685, {QString::number(invalid - 1)});
    updateStatus(text);
}

// ---- the fields ------------------------------------------------------------------------------------

UKVOSearchPrivate::ColumnPtr UKVOSearchPrivate::columnOf(const QObject* control) const
{
    const CFilterColumns* cols = columns();
    if (!cols || !control)
        return nullptr;
    const QString name = control->property("tag").toString();
    return name.isEmpty() ? nullptr : cols->Item(name);
}

void UKVOSearchPrivate::connectTextField(QLineEdit* box)
{
    box->installEventFilter(q);
    QObject::connect(box, &QLineEdit::textChanged, q, [this, box] { textFieldChange(box); });
}

void UKVOSearchPrivate::connectNoteField(QPlainTextEdit* box)
{
    box->installEventFilter(q);
    box->viewport()->installEventFilter(q);
    QObject::connect(box, &QPlainTextEdit::textChanged, q, [this, box] { noteFieldChange(box); });
}

void UKVOSearchPrivate::connectComboField(QComboBox* combo)
{
    // Its line edit has no menu of its own, so its keys are all there is to test.
    combo->installEventFilter(q);
    QObject::connect(combo, &QComboBox::editTextChanged, q, [this, combo] { comboFieldChange(combo); });
    QObject::connect(combo, &QComboBox::currentIndexChanged, q, [this, combo] { comboFieldChange(combo); });
}

void UKVOSearchPrivate::connectComboView(QComboBox* combo)
{
    combo->installEventFilter(q);
    QObject::connect(combo, &QComboBox::currentIndexChanged, q, [this, combo] { comboViewClick(combo); });
}

void UKVOSearchPrivate::connectCheckField(QCheckBox* box)
{
    box->installEventFilter(q);
    QObject::connect(box, &QCheckBox::toggled, q, [this, box] { checkFieldClick(box); });
}

bool UKVOSearchPrivate::fieldEvent(QObject* watched, QEvent* event)
{
    auto* widget = qobject_cast<QWidget*>(watched);
    if (!widget || destroying)
        return false;
    const QEvent::Type type = event->type();
    if (type == QEvent::ContextMenu)
        return contextMenu(widget, event);
    if (type != QEvent::FocusIn && type != QEvent::FocusOut && type != QEvent::KeyPress)
        return false;

    const bool textField = txtTextField->indexOf(widget) >= 0;
    const bool noteField = txtNoteField->indexOf(widget) >= 0;
    const bool comboField = cboField->indexOf(widget) >= 0;
    if (type == QEvent::KeyPress) {
        if (!textField && !noteField && !comboField)
            return false;
        const std::optional<int> key = keyPressCode(*static_cast<QKeyEvent*>(event));
        if (!key || keyAllowed(widget, *key))
            return false;
        UiServices::current().Beep();
        return true;
    }

    const bool gotFocus = type == QEvent::FocusIn;
    if (textField || noteField) {
        if (gotFocus)
            textFieldGotFocus(widget);
        else if (textField)
            textFieldLostFocus(static_cast<QLineEdit*>(widget));
        else
            noteFieldLostFocus(static_cast<QPlainTextEdit*>(widget));
    } else if (comboField || chkField->indexOf(widget) >= 0) {
        if (!gotFocus) {
            clearStatusPanels();
            return false;
        }
        checkVisible(widget);
        const ColumnPtr column = columnOf(widget);
        if (column && editing())
            prompts(*column);
        if (comboField && column && column->MyComboBox() && column->MyComboBox()->ListIndex() < 0)
            static_cast<QComboBox*>(widget)->lineEdit()->selectAll();
    } else if (gotFocus && cboFieldView->indexOf(widget) >= 0) {
        checkVisible(widget);
    }
    return false;
}

bool UKVOSearchPrivate::keyAllowed(QWidget* field, int key)
{
    const ColumnPtr column = columnOf(field);
    if (!column)
        return true;
    if (const int index = txtTextField->indexOf(field); index >= 0) {
        if (column->ColumnType() != fcText || txtTextField->item(index)->isReadOnly())
            return true;
        return ValidKeyPress(txtTextField->adapter(index), key, 0);
    }
    if (const int index = txtNoteField->indexOf(field); index >= 0) {
        if (column->ColumnType() != fcNote || txtNoteField->item(index)->isReadOnly())
            return true;
        return ValidKeyPress(txtNoteField->adapter(index), key, 0);
    }
    if (const int index = cboField->indexOf(field); index >= 0)
        return ValidKeyPress(cboField->adapter(index), key, column->TextLengthInUI());
    return true;
}

bool UKVOSearchPrivate::contextMenu(QWidget* widget, QEvent* event)
{
    // The standard menu, with its paste judged by the key test on the clipboard's text.
    QWidget* field = nullptr;
    QMenu* menu = nullptr;
    const char* context = nullptr;
    std::function<void()> paste;
    const QPoint position = static_cast<QContextMenuEvent*>(event)->pos();
    if (auto* line = qobject_cast<QLineEdit*>(widget); line && txtTextField->indexOf(line) >= 0) {
        field = line;
        menu = line->createStandardContextMenu();
        context = "QLineEdit";
        paste = [line] { line->paste(); };
    } else if (auto* note = qobject_cast<QPlainTextEdit*>(widget->parentWidget()); note && txtNoteField->indexOf(note) >= 0) {
        field = note;
        menu = note->createStandardContextMenu(position);
        context = "QWidgetTextControl";
        paste = [note] { note->paste(); };
    } else {
        return false;
    }
    if (QAction* action = pasteAction(menu, context)) {
        QObject::disconnect(action, &QAction::triggered, nullptr, nullptr);
        QObject::connect(action, &QAction::triggered, q, [this, field, paste] {
            if (keyAllowed(field, kKeyPaste))
                paste();
            else
                UiServices::current().Beep();
        });
    }
    menu->exec(widget->mapToGlobal(position));
    delete menu;
    return true;
}

void UKVOSearchPrivate::textFieldGotFocus(QWidget* box)
{
    checkVisible(box);
    QPalette palette = box->palette();
    palette.setColor(QPalette::Base, q->palette().color(QPalette::Base));
    palette.setColor(QPalette::Text, q->palette().color(QPalette::Text));
    box->setPalette(palette);
    const ColumnPtr column = columnOf(box);
    if (column && editing())
        prompts(*column);
    if (auto* line = qobject_cast<QLineEdit*>(box))
        line->selectAll();
    else if (auto* note = qobject_cast<QPlainTextEdit*>(box))
        note->selectAll();
}

void UKVOSearchPrivate::textFieldLostFocus(QLineEdit* box)
{
    if (!q->Exists())
        return;
    clearStatusPanels();
    const ColumnPtr column = columnOf(box);
    const QString trimmed = box->text().trimmed();
    if (!column || trimmed.isEmpty() || !column->IsValid())
        return;
    // The new text raises the change event in its turn.
    const QString normal = normalText(column->ColumnType(), trimmed);
    if (normal != box->text())
        box->setText(normal);
}

void UKVOSearchPrivate::noteFieldLostFocus(QPlainTextEdit* box)
{
    if (!q->Exists())
        return;
    clearStatusPanels();
    const ColumnPtr column = columnOf(box);
    const QString trimmed = box->toPlainText().trimmed();
    if (column && !trimmed.isEmpty() && column->IsValid() && trimmed != box->toPlainText())
        box->setPlainText(trimmed);
}

void UKVOSearchPrivate::textFieldChange(QLineEdit* box)
{
    if (buildingRows)
        return;
    const ColumnPtr column = columnOf(box);
    if (!column)
        return;
    column->Validate();
    prompts(*column);
    // A caption in italics, underlined, marks a value that is not valid.
    if (auto* label = qobject_cast<QLabel*>(widgetOf(column->MyCaptionLabel()))) {
        QFont font = label->font();
        if (font.underline() == column->IsValid()) {
            font.setUnderline(!column->IsValid());
            font.setItalic(!column->IsValid());
            label->setFont(font);
        }
    }
    valueChanged();
}

void UKVOSearchPrivate::noteFieldChange(QPlainTextEdit* box)
{
    if (buildingRows)
        return;
    const ColumnPtr column = columnOf(box);
    if (!column)
        return;
    column->Validate();
    valueChanged();
}

void UKVOSearchPrivate::comboFieldChange(QComboBox* combo)
{
    if (buildingRows)
        return;
    // The typed text of a keyword list is no change yet: only adding or removing an entry is.
    if (const ColumnPtr column = columnOf(combo))
        column->UpdateListButtons();
    scheduleControlsUpdate();
}

void UKVOSearchPrivate::comboViewClick(QComboBox* combo)
{
    if (buildingRows || !editing())
        return;
    const ColumnPtr column = columnOf(combo);
    if (!column || !column->IsPicklist() || column->SavedValue().text() == combo->currentText())
        return;
    column->Validate();
    valueChanged();
}

void UKVOSearchPrivate::checkFieldClick(QCheckBox*)
{
    if (!buildingRows)
        valueChanged();
}

// ---- the buttons -------------------------------------------------------------------------------------

void UKVOSearchPrivate::takeFocus(QPushButton* button)
{
    button->setFocus(Qt::OtherFocusReason);
}

void UKVOSearchPrivate::cmdEditClick()
{
    takeFocus(cmdEdit);
    if (cmdEdit->isEnabled())
        setIsEditing(true);
}

void UKVOSearchPrivate::cmdOkClick()
{
    takeFocus(cmdOk);
    emit q->OkButtonClick();
    setIsEditing(false);
}

void UKVOSearchPrivate::cmdApplyClick()
{
    takeFocus(cmdApply);
    if (!cmdApply->isEnabled() || !isDirty)
        return;
    saveData();
    emit q->ApplyButtonClick();
    setIsEditing(false);
}

void UKVOSearchPrivate::cmdCancelClick()
{
    takeFocus(cmdCancel);
    if (cmdCancel->isHidden())
        return;
    emit q->CancelButtonClick();
    setIsEditing(false);
}

void UKVOSearchPrivate::cmdResetClick()
{
    takeFocus(cmdReset);
    if (isDirty)
        resetData();
}

void UKVOSearchPrivate::cmdClearClick()
{
    takeFocus(cmdClear);
    clearData();
}

void UKVOSearchPrivate::cmdAddClick(QPushButton* button)
{
    takeFocus(button);
    const ColumnPtr column = columnOf(button);
    if (column && column->AddComboText())
        valueChanged();
}

void UKVOSearchPrivate::cmdRemoveClick(QPushButton* button)
{
    takeFocus(button);
    const ColumnPtr column = columnOf(button);
    if (column && column->RemoveComboEntry())
        valueChanged();
}

void UKVOSearchPrivate::cmdNowClick(QPushButton* button)
{
    takeFocus(button);
    const ColumnPtr column = columnOf(button);
    if (!column || !column->MyTextBox())
        return;
    QDateTime now = QDateTime::currentDateTime();
    now.setTime(QTime(now.time().hour(), now.time().minute(), now.time().second()));
    column->MyTextBox()->SetText(DateToText(now));
    valueChanged();
}

void UKVOSearchPrivate::cmdTemplateCopyClick()
{
    takeFocus(cmdTemplateCopy);
    if (CFilterColumns* cols = columns())
        cols->SaveTemplate();
}

void UKVOSearchPrivate::cmdTemplatePasteClick()
{
    takeFocus(cmdTemplatePaste);
    if (CFilterColumns* cols = columns())
        cols->CopyTemplate();
}

} // namespace searchdata
