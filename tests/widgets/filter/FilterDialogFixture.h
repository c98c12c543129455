#pragma once

// A base table with search data to filter, and the means to drive the filter dialog by keys and clicks.

#include "filter/frmFilter.h"
#include "searchdata/CFilterTerms.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/Catalog.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/Profile.h"
#include "support/TestDatabase.h"
#include "support/WidgetTestSupport.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <memory>

namespace searchdata::test {

/// The host's view of Parts: its own captions, and a help text for each of its fields.
class PartsTable : public ISearchBaseTable {
public:
    QString TableName() const override { return QStringLiteral("Parts"); }
    QString EditFilterCaption() const override { return QStringLiteral("Find parts"); }
    QString EditFilterHelpCaption() const override { return QStringLiteral("Finding parts"); }
    QString EditFilterColumnHelpText(const QString& fieldName) const override
    {
        return QStringLiteral("The part's own field ") + fieldName + QLatin1Char('.');
    }
};

/// Parts (PartId, Name, Qty, Internal, Picture) with six records, and the search columns Maker (text),
/// Price (double), Delivered (date), Checked (boolean) and Tag (keyword), saved and filled:
///
///   id  Name     Qty  Maker   Price  Delivered         Checked  Tag
///   1   bolt     10   Acme    1.5    2024-01-10        yes      red, small
///   2   nut      200  Bolton  0.2    2024-03-01        no       blue
///   3   washer   35   Acme    0.05   2023-12-24        no
///   4   gear     7    Gearco  12     2024-02-15 10:30  yes      red
///   5   shaft    120  O'Neil  45.5   2024-05-05        no       steel, red
///   6   bracket  0    (blank) 0      (none)            no
///
/// The host marks Internal as not to be filtered and shows Qty as "Quantity"; Picture is binary and
/// cannot be filtered. The widgets' services are installed, and the user's number is 7.
class FilterDialogTest : public DatabaseTest {
protected:
    void SetUp() override;
    void TearDown() override;

    /// A dialog prepared over the columns with `terms` by the window of `owner`, shown and active.
    std::unique_ptr<frmFilter> openDialog(std::shared_ptr<CFilterTerms> terms = nullptr, const IFormInfo* owner = nullptr);

    QComboBox* conjunction(int row) const { return combo("cboConjunction", row); }
    QComboBox* field(int row) const { return combo("imgcboFields", row); }
    QComboBox* comparison(int row) const { return combo("cboComparison", row); }
    QLineEdit* compareTo(int row) const;
    QPushButton* button(const char* name) const;

    /// Chooses the field of `key` in row `row` ("<<none>>", a column name, or a base field's key).
    void chooseField(int row, const QString& key);
    /// The key under which the dialog lists the base field `name`.
    QString baseKey(const QString& name) const;
    void chooseOperation(int row, EComparisonOperations operation);
    void chooseConjunction(int row, EConjunctions conjunction);
    /// Types `text` over what the row's compare-to box holds, and leaves the box with Tab.
    void typeCompareTo(int row, const QString& text);

    /// One row as a user fills it: a field key, an operation, a compare text and its conjunction.
    struct Row {
        QString key;
        EComparisonOperations operation;
        QString compareTo;
        EConjunctions conjunction = kvoCJ_And;
    };
    void fillRows(const QList<Row>& rows);

    /// The keys of Parts that `predicate` selects, in order.
    QList<qint64> partsWhere(const QString& predicate);
    QString q(const QString& name) const { return m_db->handler()->BracketName(name); }

    std::shared_ptr<IniProfile> profile;
    std::shared_ptr<CSearchFilter> search;
    std::shared_ptr<CFilterColumns> columns;
    std::unique_ptr<ServicesGuard> services;
    frmFilter* dialog = nullptr;

private:
    QComboBox* combo(const char* name, int row) const;
    void fillValues();
};

} // namespace searchdata::test
