#pragma once

#include "ButtonAdapter.h"
#include "CheckBoxAdapter.h"
#include "ComboBoxAdapter.h"
#include "ControlArray.h"
#include "LabelAdapter.h"
#include "LinePanel.h"
#include "Surface.h"
#include "TextBoxAdapter.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/IContainer.h"
#include "searchdata/widgets/UKVOSearch.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHash>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>

class QScrollBar;
class QStatusBar;
class QTimer;
class QTreeWidget;

namespace searchdata {

/// The state and the inner workings of `UKVOSearch`: its surface and lifecycle (UKVOSearch.cpp),
/// the rows (UKVOSearchRows.cpp), the layout (UKVOSearchLayout.cpp) and editing
/// (UKVOSearchEditing.cpp).
class UKVOSearchPrivate {
public:
    using ColumnPtr = CFilterColumns::ColumnPtr;

    explicit UKVOSearchPrivate(UKVOSearch* control);
    ~UKVOSearchPrivate();

    UKVOSearch* const q;

    // ---- state ---------------------------------------------------------------------------------
    std::shared_ptr<CSearchFilter> filter;
    std::shared_ptr<IContainer> container;
    Recordset* sourceRecordset = nullptr;
    ISearchBaseEntry* sourceEntry = nullptr;
    KVOSearchEditExamineModes editMode = kseModeEdit;
    bool isDirty = false;
    bool displayBaseRecord = true;
    bool showOKButton = true;
    bool showCancelButton = true;
    qint16 borderStyle = 0;
    qint16 fieldsVisible = 0;
    float fieldSpacing = 0;
    float labelColumnWidth = 0;
    float widthMin = 0;
    float heightMin = 0;
    bool controlReady = false;
    QPointer<detail::LinePanel> messagePanel;
    bool legacyOkCancel = false;
    bool isEditing = false;
    bool updatePending = false;
    // While the rows are built, the values they are emptied to are no edits: their change events wait
    // for the values that the build ends with.
    bool buildingRows = false;
    // Set while the control goes: the events of its dying widgets change nothing.
    bool destroying = false;

    // ---- the surface ---------------------------------------------------------------------------
    detail::Surface* picContainer;
    QLabel* lblEntry;
    QTreeWidget* lvwEntry;
    detail::Surface* picView;
    detail::Surface* picFields;
    QScrollBar* vsbFields;
    detail::Surface* picStatus;
    QLineEdit* txtStatus;
    QStatusBar* sbrStatus;
    QLabel* statusPanels[2];
    int statusPanelCount = 0;
    QTimer* tmrUpdate;
    QPushButton* cmdOk;
    QPushButton* cmdCancel;
    QPushButton* cmdApply;
    QPushButton* cmdReset;
    QPushButton* cmdClear;
    QPushButton* cmdEdit;
    QPushButton* cmdTemplateCopy;
    QPushButton* cmdTemplatePaste;
    // The button that Enter presses, and the one that Escape presses.
    QPointer<QPushButton> defaultButton;
    QPointer<QPushButton> cancelButton;
    std::unique_ptr<detail::ButtonAdapter> okButton;
    std::unique_ptr<detail::ButtonAdapter> applyButton;

    // ---- the rows, as control arrays -------------------------------------------------------------
    std::unique_ptr<detail::ControlArray<QComboBox, detail::ComboBoxAdapter>> cboField;
    std::unique_ptr<detail::ControlArray<QComboBox, detail::ComboBoxAdapter>> cboFieldView;
    std::unique_ptr<detail::ControlArray<QCheckBox, detail::CheckBoxAdapter>> chkField;
    std::unique_ptr<detail::ControlArray<QPushButton, detail::ButtonAdapter>> cmdAdd;
    std::unique_ptr<detail::ControlArray<QPushButton, detail::ButtonAdapter>> cmdNow;
    std::unique_ptr<detail::ControlArray<QPushButton, detail::ButtonAdapter>> cmdRemove;
    std::unique_ptr<detail::ControlArray<QLabel, detail::LabelAdapter>> lblField;
    std::unique_ptr<detail::ControlArray<detail::LinePanel, detail::NoAdapter>> picLine;
    std::unique_ptr<detail::ControlArray<QLineEdit, detail::TextBoxAdapter>> txtTextField;
    std::unique_ptr<detail::ControlArray<QPlainTextEdit, detail::TextBoxAdapter>> txtNoteField;

    // ---- surface and lifecycle -------------------------------------------------------------------
    void makeSurface();
    void makeRowTemplates();
    void setCaptions();
    void sizeTemplates();
    void markChanged(const char* name);
    void setEditMode(KVOSearchEditExamineModes mode) { editMode = mode; }
    bool editing() const { return editMode == kseModeEdit && isEditing; }
    CFilterColumns* columns() const { return filter ? filter->FilterColumns().get() : nullptr; }
    void controlSetup();
    void resetData();
    void saveData();
    void clearData();
    bool isClear() const;
    void setDirty(bool dirty) { isDirty = dirty; }
    void closeSearch();

    // ---- rows --------------------------------------------------------------------------------------
    QLabel* labelItem(int index);
    detail::LinePanel* lineItem(int index);
    /// Takes a row control away: hidden when it is one of the first two members of its array, which
    /// the next rows use again, deleted otherwise.
    void removeRowControl(IControl* control);
    void setupBaseControls();
    void setupListView();
    void setupDataEntryFields();
    void setupGenericLabel(CFilterColumn& column, const CFilterColumn* previous);
    void setupBooleanItem(CFilterColumn& column, const CFilterColumn* previous);
    void setupComboItem(CFilterColumn& column);
    void placeRow(QWidget* widget, const CFilterColumn* previous) const;
    QString sampleText(const CFilterColumn& column) const;
    /// The host's width of `text`, measured once per build of the rows.
    float textWidth(const QString& text) const;
    mutable QHash<QString, float> textWidths;

    // ---- layout ------------------------------------------------------------------------------------
    void sizeSetup();
    void calculateMinimumHeight();
    void controlsArrange();
    void arrangeRows();
    void repositionFields(float percent);
    void checkVisible(QWidget* control);
    void tabOrder();
    void userControlResize() { controlsArrange(); }

    // ---- editing -----------------------------------------------------------------------------------
    void setIsEditing(bool value);
    void scheduleControlsUpdate();
    /// A value of the entry changed: there is something to save, and the buttons must follow.
    void valueChanged();
    void testControlsUpdate();
    void runControlsUpdate();
    void updateStatus(const QString& text);
    void prompts(const CFilterColumn& column);
    void clearStatusPanels();
    void addStatusPanel(const QString& text);
    ColumnPtr columnOf(const QObject* control) const;
    /// Gives `button` the focus first, so that the field being left has finished with it.
    void takeFocus(QPushButton* button);

    void connectTextField(QLineEdit* box);
    void connectNoteField(QPlainTextEdit* box);
    void connectComboField(QComboBox* combo);
    void connectComboView(QComboBox* combo);
    void connectCheckField(QCheckBox* box);
    bool fieldEvent(QObject* watched, QEvent* event);
    /// Whether a key (or a paste) may change the text of `editor`, as the column's rule says.
    bool keyAllowed(QWidget* editor, int key);
    bool contextMenu(QWidget* editor, QEvent* event);

    void textFieldGotFocus(QWidget* box);
    void textFieldLostFocus(QLineEdit* box);
    void noteFieldLostFocus(QPlainTextEdit* box);
    void textFieldChange(QLineEdit* box);
    void noteFieldChange(QPlainTextEdit* box);
    void comboFieldChange(QComboBox* combo);
    void comboViewClick(QComboBox* combo);
    void checkFieldClick(QCheckBox* box);

    void cmdEditClick();
    void cmdOkClick();
    void cmdApplyClick();
    void cmdCancelClick();
    void cmdResetClick();
    void cmdClearClick();
    void cmdAddClick(QPushButton* button);
    void cmdRemoveClick(QPushButton* button);
    void cmdNowClick(QPushButton* button);
    void cmdTemplateCopyClick();
    void cmdTemplatePasteClick();
};

} // namespace searchdata
