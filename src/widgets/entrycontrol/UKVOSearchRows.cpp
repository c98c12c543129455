// The rows of the entry control: one row of controls per search column, built from control arrays
// whenever the edit state changes, since the kind of control a column gets depends on it.

#include "UKVOSearch_p.h"

#include "platform/Guard_p.h"
#include "searchdata/Recordset.h"
#include "searchdata/Resources.h"

#include <QHeaderView>
#include <QTreeWidget>

namespace searchdata {

using namespace detail;

namespace {

constexpr char kModule[] = "KVOSearchEdit";

// The room beside a text in a column header of the base record, 300 twips.
constexpr float kHeaderPadding = 20;

bool isTextType(FilterColumnTypeConstants type)
{
    return type == fcKeyword || type == fcText || type == fcNote;
}

} // namespace

QLabel* UKVOSearchPrivate::labelItem(int index)
{
    return lblField->item(index);
}

LinePanel* UKVOSearchPrivate::lineItem(int index)
{
    const bool loaded = picLine->isLoaded(index);
    LinePanel* line = picLine->item(index);
    // A member made here is a rule: as thin as its border.
    if (!loaded)
        line->resize(line->width(), line->borderThickness());
    return line;
}

void UKVOSearchPrivate::removeRowControl(IControl* control)
{
    QWidget* widget = widgetOf(control);
    if (!widget)
        return;
    const auto take = [widget](auto& array) {
        const int index = array->indexOf(widget);
        if (index < 0)
            return false;
        if (index < 2)
            widget->hide();
        else
            array->unload(index);
        return true;
    };
    (void)(take(cboField) || take(cboFieldView) || take(chkField) || take(cmdAdd) || take(cmdNow) || take(cmdRemove) || take(lblField)
           || take(txtTextField) || take(txtNoteField));
}

QString UKVOSearchPrivate::sampleText(const CFilterColumn& column) const
{
    return QString(isTextType(column.ColumnType()) ? column.TextLengthInUI() : 15, QLatin1Char('W'));
}

float UKVOSearchPrivate::textWidth(const QString& text) const
{
    // Arranging asks for the same few sample texts on every resize; measuring text is what costs.
    const auto known = textWidths.constFind(text);
    if (known != textWidths.cend())
        return *known;
    const float width = container ? container->TextWidth(text) : float(QFontMetricsF(q->font()).horizontalAdvance(text));
    textWidths.insert(text, width);
    return width;
}

void UKVOSearchPrivate::placeRow(QWidget* widget, const CFilterColumn* previous) const
{
    float top = fieldSpacing;
    if (previous) {
        const QWidget* label = widgetOf(previous->MyCaptionLabel());
        const QWidget* control = widgetOf(previous->MyControl());
        if (label && control)
            top = float(control->y() + std::max(label->height(), control->height())) + fieldSpacing;
        else if (label)
            top = float(label->y() + label->height()) + fieldSpacing;
        else if (control)
            top = float(control->y() + control->height()) + fieldSpacing;
    }
    widget->move(qRound(fieldSpacing), qRound(top));
}

void UKVOSearchPrivate::setupBaseControls()
{
    SD_PROC("SetupBaseControls");
    textWidths.clear();
    lblEntry->setText(GetResourceText(7392, {columns()->BaseTableName()}));
    lblEntry->resize(lblEntry->sizeHint().width(), lblEntry->height());

    // Symbols, not words: the tool tips say what the buttons do.
    cmdAdd->item(0)->setText(QStringLiteral("+"));
    cmdAdd->item(0)->setToolTip(GetResourceText(8074));
    cmdRemove->item(0)->setText(QStringLiteral("-"));
    cmdRemove->item(0)->setToolTip(GetResourceText(8075));
    cmdNow->item(0)->setText(QStringLiteral("*"));
    cmdNow->item(0)->setToolTip(GetResourceText(8083));
    for (QPushButton* b : {cmdAdd->item(0), cmdRemove->item(0), cmdNow->item(0)}) {
        QFont font = b->font();
        font.setPointSizeF(12);
        b->setFont(font);
        const int side = b->sizeHint().height();
        b->resize(side, side);
    }
    picView->resize(picContainer->scaleWidth(), picView->height());
    // The rule above the status bar, made here so that arranging never makes a control.
    lineItem(1);
}

void UKVOSearchPrivate::setupListView()
{
    SD_PROC("SetupListView");
    lvwEntry->clear();
    lvwEntry->setColumnCount(0);
    if (!sourceRecordset)
        return;
    const QStringList names = sourceRecordset->fieldNames();
    QStringList values;
    QList<float> widths;
    for (const QString& name : names) {
        float width = textWidth(name) + kHeaderPadding;
        QString text;
        if (sourceRecordset->hasField(name)) {
            text = sourceRecordset->field(name).text();
            width = std::max(width, textWidth(text) + kHeaderPadding);
        }
        values << text;
        widths << width;
    }
    lvwEntry->setHeaderLabels(names);
    for (int i = 0; i < widths.size(); ++i)
        lvwEntry->setColumnWidth(i, qRound(widths[i]));
    if (!names.isEmpty())
        lvwEntry->addTopLevelItem(new QTreeWidgetItem(values));
}

void UKVOSearchPrivate::setupGenericLabel(CFilterColumn& column, const CFilterColumn* previous)
{
    const int wrapLimit = 2 * cmdAdd->item(0)->width();
    const int index = column.Index() - 1;
    QLabel* label = labelItem(index);
    LabelAdapter* caption = lblField->adapter(index);
    column.setMyCaptionLabel(caption);
    label->show();
    caption->SetCaption(column.CaptionOrName() + QStringLiteral(": "));
    label->setProperty("tag", sampleText(column));
    // The limit holds only when a label widens the caption column.
    if (labelColumnWidth < float(label->width())) {
        labelColumnWidth = float(label->width());
        if (labelColumnWidth > float(wrapLimit)) {
            labelColumnWidth = float(wrapLimit);
            LabelAdapter::setWordWrap(label, true);
            LabelAdapter::setWidth(label, wrapLimit);
        }
    }
    placeRow(label, previous);
}

void UKVOSearchPrivate::setupBooleanItem(CFilterColumn& column, const CFilterColumn* previous)
{
    const int index = column.Index() - 1;
    if (column.MyControl()) {
        removeRowControl(column.MyControl());
        column.setMyControl(nullptr);
    }
    const QString caption = column.CaptionOrName();
    QWidget* control = nullptr;
    if (editing()) {
        QCheckBox* box = chkField->item(index);
        column.setMyControl(chkField->adapter(index));
        box->setProperty("tag", column.Name());
        box->show();
        box->setText(caption);
        box->resize(qRound(textWidth(caption)) + box->height(), box->height());
        control = box;
    } else {
        // Read-only, the value stands in the caption: "Name = True".
        QLabel* label = labelItem(index);
        LabelAdapter* adapter = lblField->adapter(index);
        column.setMyControl(adapter);
        label->show();
        label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
        label->setWordWrap(true);
        label->setProperty("autoSize", true);
        label->resize(qRound(container ? container->ScaleWidth() : 0), label->height());
        adapter->SetCaption(caption);
        control = label;
    }
    placeRow(control, previous);
}

void UKVOSearchPrivate::setupComboItem(CFilterColumn& column)
{
    const int index = column.Index() - 1;
    for (IControl* former : {column.MyControl(), static_cast<IControl*>(column.MyAddButton()), static_cast<IControl*>(column.MyRemoveButton())})
        removeRowControl(former);
    column.setMyControl(nullptr);
    column.setMyAddButton(nullptr);
    column.setMyRemoveButton(nullptr);

    QWidget* label = widgetOf(column.MyCaptionLabel());
    if (label)
        label->setProperty("tag", sampleText(column));

    const bool keyword = column.ColumnType() == fcKeyword;
    ControlArray<QComboBox, ComboBoxAdapter>* array = nullptr;
    if (keyword)
        array = editing() ? cboField.get() : cboFieldView.get();
    else if (column.IsPicklist() && editing())
        array = cboFieldView.get();
    else
        return;

    QComboBox* combo = array->item(index);
    ComboBoxAdapter* adapter = array->adapter(index);
    combo->setProperty("tag", column.Name());
    combo->setToolTip(column.MyCaptionLabel() ? column.MyCaptionLabel()->Caption() : QString());
    adapter->Clear();
    column.setMyControl(adapter);

    if (keyword && editing()) {
        adapter->SetLocked(false);
        for (auto* buttons : {cmdAdd.get(), cmdRemove.get()}) {
            QPushButton* b = buttons->item(index);
            b->setProperty("tag", column.Name());
            b->show();
            b->resize(b->width(), combo->height());
        }
        column.setMyAddButton(cmdAdd->adapter(index));
        column.setMyRemoveButton(cmdRemove->adapter(index));
        column.UpdateListButtons();
    } else if (keyword) {
        adapter->SetLocked(true);
        column.UpdateListButtons();
    } else {
        adapter->SetLocked(false);
    }
}

void UKVOSearchPrivate::setupDataEntryFields()
{
    SD_PROC("SetupDataEntryFields");
    CFilterColumns* cols = columns();
    if (!cols)
        return;
    buildingRows = true;
    const CFilterColumn* previous = nullptr;
    for (const ColumnPtr& ptr : *cols) {
        CFilterColumn& column = *ptr;
        const int index = column.Index() - 1;
        const FilterColumnTypeConstants type = column.ColumnType();
        if (type == fcBoolean) {
            setupBooleanItem(column, previous);
        } else {
            setupGenericLabel(column, previous);
            if (type == fcKeyword || (column.IsPicklist() && editing())) {
                setupComboItem(column);
            } else {
                // A picklist loses here the combo box that an edit session gave it.
                if (column.IsPicklist())
                    setupComboItem(column);
                TextBoxAdapter* box = type == fcNote ? txtNoteField->adapter(index) : txtTextField->adapter(index);
                QWidget* boxWidget = box->widget();
                const bool readOnly = editMode == kseModeExamine || !isEditing;
                box->SetMaxLength(type == fcText ? column.TextLengthInUI() : 255);
                box->SetLocked(readOnly || (type == fcDateTime && column.DisableEditDateTime()));
                boxWidget->setToolTip(column.MyCaptionLabel()->Caption());
                boxWidget->setProperty("tag", column.Name());
                box->SetText(QString());
                column.setMyControl(box);
                if (type == fcDateTime && !column.DisableEditDateTime()) {
                    if (!box->Locked()) {
                        QPushButton* now = cmdNow->item(index);
                        column.setMyDefaultButton(cmdNow->adapter(index));
                        now->setProperty("tag", column.Name());
                        now->show();
                        now->resize(now->width(), boxWidget->height());
                    } else if (column.MyDefaultButton()) {
                        removeRowControl(column.MyDefaultButton());
                        column.setMyDefaultButton(nullptr);
                    }
                }
            }
            IControl* value = column.MyComboBox() ? static_cast<IControl*>(column.MyComboBox()) : column.MyTextBox();
            if (QWidget* control = widgetOf(value)) {
                const QWidget* label = widgetOf(column.MyCaptionLabel());
                control->show();
                control->move(label->x() + label->width(), label->y());
            }
        }
        column.Validate();
        previous = &column;
    }
    buildingRows = false;

    if (previous) {
        int bottom = 0;
        if (const QWidget* label = widgetOf(previous->MyCaptionLabel()))
            bottom = label->y() + label->height();
        if (const QWidget* control = widgetOf(previous->MyControl()))
            bottom = std::max(bottom, control->y() + control->height());
        picFields->resize(picFields->width(), qRound(float(bottom) + fieldSpacing));
    }
}

} // namespace searchdata
