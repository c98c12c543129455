#pragma once

#include "searchdata/Enums.h"

#include <QPixmap>
#include <QWidget>
#include <memory>

namespace searchdata {

class CSearchFilter;
class Catalog;
class DatabaseHandler;
class IContainer;
class IPropertyStore;
class IProfile;
class ISearchBaseEntry;
class ISearchBaseTable;
class Recordset;
class TableStructure;
class UKVOSearchPrivate;

/// The entry control: a host places it on a form, opens it on one base table, and points it at one
/// record, whose search values it shows and lets the user edit. It builds one row of controls per
/// search column, lays itself out from the height of its font, and tells the host by signals when
/// the user acts. It holds no data itself: values live in the columns of the search it opened.
///
/// States: closed (no search open), opened (no record yet), examining (`kseModeExamine`), viewing
/// (`kseModeEdit`, not editing: rows read-only, Edit button) and editing (rows editable, with OK,
/// Apply, Reset, Clear, Cancel and the template buttons). Signals run synchronously: the host's slot
/// ends before the control goes on.
///
/// Made while the user's language is Japanese (`LanguageServices`), the control takes a font family
/// with Japanese glyphs for all its parts; rows made later take it from the control.
///
/// Sizes are device-independent pixels. The host saves the instance's persisted properties with
/// `WriteProperties` and gives them back with `ReadProperties`; `PropertyChanged` tells it when one
/// changed. Nothing here throws: failures are reported to `Diagnostics` and the operation leaves
/// with what it did.
class UKVOSearch : public QWidget {
    Q_OBJECT
    Q_PROPERTY(bool Enabled READ Enabled WRITE SetEnabled DESIGNABLE true)
    Q_PROPERTY(bool ShowOKButton READ ShowOKButton WRITE SetShowOKButton DESIGNABLE true)
    Q_PROPERTY(bool ShowCancelButton READ ShowCancelButton WRITE SetShowCancelButton DESIGNABLE true)
    Q_PROPERTY(bool DisplayBaseRecord READ DisplayBaseRecord WRITE SetDisplayBaseRecord DESIGNABLE true)
    Q_PROPERTY(qint16 BorderStyle READ BorderStyle WRITE SetBorderStyle DESIGNABLE true)
    Q_PROPERTY(qint16 FieldsVisible READ FieldsVisible WRITE SetFieldsVisible DESIGNABLE true)

public:
    explicit UKVOSearch(QWidget* parent = nullptr);
    ~UKVOSearch() override;

    // ---- persisted properties ----------------------------------------------------------------

    /// The properties of a new instance: every boolean True, `BorderStyle` and `FieldsVisible` 0.
    void InitProperties();
    /// Reads the instance's properties, each on its own: one that cannot be read or set takes its
    /// default. A stored "OkCancelButtons" (an older setting) other than True changes nothing shown;
    /// it makes the control ask to be stored again, so that the setting goes.
    void ReadProperties(const IPropertyStore& store);
    /// Writes the instance's properties; one equal to its default leaves no key.
    void WriteProperties(IPropertyStore& store) const;

    // ---- the surface -----------------------------------------------------------------------

    /// Pictures of the host's menu items.
    QPixmap BitmapLarge(FilterMenuItems enmBitmapId) const;
    QPixmap BitmapSmall(FilterMenuItems enmBitmapId) const;
    /// 0: no border; 1: a sunken frame around the control.
    qint16 BorderStyle() const;
    void SetBorderStyle(qint16 value);
    /// Ends the use of the base table: an edit session is cancelled (with its signals), the rows go,
    /// and the control is closed. It may be opened again.
    void CloseSearch();
    /// Returns whether data in the control has been saved.
    bool IsDirty() const;
    /// Shows the search values of the record `oSource` in `enmMode`; `rstSource` (may be null) is
    /// the base record, shown above the rows when `DisplayBaseRecord`. Both must stay alive while
    /// they are shown, that is until the next `Display` or `CloseSearch`. Does nothing before a
    /// successful `OpenSearch`. During an edit session a mode other than `kseModeEdit` cancels it;
    /// `kseModeEdit` keeps it and reloads the values, dropping what was not saved.
    void Display(Recordset* rstSource, ISearchBaseEntry* oSource, KVOSearchEditExamineModes enmMode);
    /// Returns/sets whether to display the base table record. Takes effect at the next rebuild of
    /// the rows, which comes with the next change of the edit state or the next opening.
    bool DisplayBaseRecord() const;
    void SetDisplayBaseRecord(bool value);
    /// Returns whether the control allows editing the search column values; set by `Display`.
    KVOSearchEditExamineModes EditMode() const;
    bool Enabled() const;
    void SetEnabled(bool value);
    /// False when no search is open, else whether the base table has columns.
    bool Exists() const;
    /// Returns/sets the minimum number of search fields that must be visible.  0 = default (4 fields if there are 4 or more defined, otherwise the total number of fields.)
    /// Stored and persisted only: no height and no layout reads it.
    qint16 FieldsVisible() const;
    void SetFieldsVisible(qint16 value);
    /// Returns the suggested minimum height for the object.
    float HeightMin() const;
    /// Whether the user is in an edit session.
    bool IsEditing() const;
    /// The open search, or null.
    std::shared_ptr<CSearchFilter> MyFilter() const;
    /// Opens the control on a base table. `obj` is the host's geometry (`UKVOSearchContainer` for a
    /// control in a layout). An open search is closed first. True when the search opened and the
    /// control keeps it; otherwise the control stays closed.
    bool OpenSearch(std::shared_ptr<IContainer> obj, std::shared_ptr<DatabaseHandler> roHandler,
                    std::shared_ptr<ISearchBaseTable> roBaseTable, std::shared_ptr<Catalog> roCatalog,
                    std::shared_ptr<IProfile> roProfile, int enmConvertMode, std::shared_ptr<TableStructure> roBaseStructure);
    /// Refreshes the control's display.
    void Refresh();
    /// Shows the values of the record as last loaded again; nothing is left to save.
    void ResetData();
    /// Saves changes to search field data for the selected base table record.
    void SaveData();
    /// Displays the About box for the control: the library's version and what it runs on. Returns
    /// when the user closes it.
    void ShowAboutBox();
    /// Whether the Cancel button may show. An edit session sets it to True while it lasts, and to
    /// False when it ends, whatever the host had chosen.
    bool ShowCancelButton() const;
    void SetShowCancelButton(bool value);
    /// Whether the OK button may show while editing; without it Apply takes its place.
    bool ShowOKButton() const;
    void SetShowOKButton(bool value);
    /// The search's SQL fragments for the host's queries; empty unless `Exists`.
    QString SQLSearchFields() const;
    QString SQLSearchJoinOn() const;
    QString SQLSearchTable() const;
    /// Captions of the host's menu items.
    QString StandardCaption(FilterMenuItems enmCaptionId) const;
    /// Returns the suggested minimum width for the object.
    float WidthMin() const;

signals:
    /// Apply saved the values; the session ends after it.
    void ApplyButtonClick();
    /// An accepted change of the edit state is complete.
    void Changed();
    void CancelButtonClick();
    /// OK was pressed; saving is the host's task. The session ends after it.
    void OkButtonClick();
    /// The user asks to edit `oEntry`; the session starts only if a slot sets `*blnAccepted` to true.
    void OnStartEditing(searchdata::ISearchBaseEntry* oEntry, bool* blnAccepted);
    /// The edit session of `oEntry` ends.
    void OnCompleteEditing(searchdata::ISearchBaseEntry* oEntry);
    /// A persisted property changed (by name); the host may store the instance again.
    void PropertyChanged(const QString& name);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    friend class UKVOSearchPrivate;
    std::unique_ptr<UKVOSearchPrivate> d;
};

} // namespace searchdata
