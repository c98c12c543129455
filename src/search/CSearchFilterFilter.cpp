// The filtering part of CSearchFilter: running the filter dialog, the saved filters of the profile,
// and the pieces with which a host joins the search table into its own queries.

#include "searchdata/CSearchFilter.h"

#include "platform/Guard_p.h"
#include "searchdata/CFilterTerms.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/Profile.h"
#include "searchdata/UiServices.h"
#include "searchdata/Validation.h"
#include "searchdata/Value.h"

#include <limits>
#include <optional>

namespace searchdata {

namespace {

constexpr char kModule[] = "CSearchFilter";

QString key(const char* name, int n)
{
    return QLatin1String(name) + QString::number(n);
}

/// Gives a term's field and table of a profile the spelling of the database, whose names may be
/// sensitive to capitals where the profile's were not. The field is known to be found.
void spellAsStored(QString& field, QString& table, const CFilterColumns& columns)
{
    const std::shared_ptr<TableStructure>& structure = columns.BaseStructure();
    if (structure && TextEquals(table, structure->name(), 1)) {
        if (const std::optional<StructureColumn> described = structure->ColumnNamed(field)) {
            field = described->name;
            table = structure->name();
        }
    } else if (const std::shared_ptr<CFilterColumn> column = columns.Item(field)) {
        field = column->Name();
        table = columns.SearchKeyword(column.get());
    }
}

bool hasCompareTo(FilterComparisonClasses comparisonClass)
{
    return comparisonClass >= kvoCC_Keyword && comparisonClass <= kvoCC_Date;
}

const Dialect& dialectOf(const CFilterColumns& columns)
{
    return columns.Handler() ? columns.Handler()->dialect() : Dialect::forKind(dbkSQLite);
}

bool hasTerms(const std::shared_ptr<CFilterTerms>& terms)
{
    return terms && terms->HasTerms();
}

/// Reads the profile's date form "#m-d-yyyy[ h:n:s]#"; nothing when a part or a delimiter is missing.
std::optional<QDateTime> readProfileDate(const QString& text)
{
    const qsizetype firstDash = text.indexOf(QLatin1Char('-'), 1);
    const qsizetype secondDash = firstDash < 0 ? -1 : text.indexOf(QLatin1Char('-'), firstDash + 1);
    if (secondDash < 0)
        return std::nullopt;
    qsizetype yearEnd = secondDash + 1;
    while (yearEnd < text.size() && text[yearEnd] != QLatin1Char(' ') && text[yearEnd] != QLatin1Char('#'))
        ++yearEnd;
    if (yearEnd >= text.size())
        return std::nullopt;

    bool ok = true;
    auto number = [&ok](QStringView part) {
        bool partOk = false;
        const int n = part.trimmed().toInt(&partOk);
        ok = ok && partOk;
        return n;
    };
    const int month = number(QStringView(text).mid(1, firstDash - 1));
    const int day = number(QStringView(text).mid(firstDash + 1, secondDash - firstDash - 1));
    const int year = number(QStringView(text).mid(secondDash + 1, yearEnd - secondDash - 1));
    QTime time(0, 0);
    const QString rest = text.mid(yearEnd).trimmed();
    if (rest != QLatin1String("#")) {
        const qsizetype firstColon = rest.indexOf(QLatin1Char(':'));
        const qsizetype secondColon = firstColon < 0 ? -1 : rest.indexOf(QLatin1Char(':'), firstColon + 1);
        const qsizetype close = secondColon < 0 ? -1 : rest.indexOf(QLatin1Char('#'), secondColon + 1);
        if (close < 0)
            return std::nullopt;
        time = QTime(number(QStringView(rest).left(firstColon)),
                     number(QStringView(rest).mid(firstColon + 1, secondColon - firstColon - 1)),
                     number(QStringView(rest).mid(secondColon + 1, close - secondColon - 1)));
    }
    const QDate date(year, month, day);
    if (!ok || !date.isValid() || !time.isValid())
        return std::nullopt;
    return QDateTime(date, time);
}

} // namespace

std::shared_ptr<CFilterTerms> CSearchFilter::Filter(std::shared_ptr<IProfile> oOldProfile, const QString& strUser,
                                                    const IFormInfo* oFI, EFilterDatabaseModes enmMode)
{
    SD_PROC("Filter");
    std::shared_ptr<CFilterTerms> terms;
    SD_GUARDED([&] {
        const std::shared_ptr<CFilterColumns> columns = m_filterColumns;
        if (!columns)
            return;
        SetupOwnerLocation(oFI);
        IProfile* profile = columns->Profile().get();
        const QString user = profile ? QString::number(profile->UserNumber()) : QString();
        terms = GetFilter(columns, profile, user, enmMode);

        // Filters were once kept under the user's name, and in another profile: move them once.
        if (profile && !hasTerms(terms)) {
            if (auto byName = GetFilter(columns, profile, strUser, enmMode); hasTerms(byName)) {
                SaveFilter(nullptr, *columns, profile, strUser, enmMode);
                SaveFilter(byName.get(), *columns, profile, user, enmMode);
                terms = byName;
            } else if (auto old = GetFilter(columns, oOldProfile.get(), strUser, enmMode); hasTerms(old)) {
                SaveFilter(nullptr, *columns, oOldProfile.get(), strUser, enmMode);
                SaveFilter(old.get(), *columns, profile, user, enmMode);
                terms = old;
            }
        }

        terms = UiServices::current().OpenFilterDialog(*columns, terms, oFI);
        if (terms)
            SaveFilter(terms.get(), *columns, profile, user, enmMode);
    });
    return terms;
}

std::shared_ptr<CFilterTerms> CSearchFilter::GetFilter(const std::shared_ptr<CFilterColumns>& columns, IProfile* profile,
                                                       const QString& userKey, EFilterDatabaseModes mode)
{
    SD_PROC("GetFilter");
    std::shared_ptr<CFilterTerms> terms;
    SD_GUARDED([&] {
        if (!profile)
            return;
        if (!columns)
            detail::fail(QStringLiteral("no columns to read a filter for"));
        terms = std::make_shared<CFilterTerms>(columns);
        const QString section = _Archive(*columns, userKey, mode);
        // The first missing field ends the filter, whatever numbers follow it.
        for (int n = 1; n <= std::numeric_limits<qint16>::max(); ++n) {
            QString field = profile->ReadProfileText(section, key("Field", n), QString());
            if (field.trimmed().isEmpty())
                break;
            QString table = profile->ReadProfileText(section, key("Table", n), QString());
            const FilterComparisonClasses comparisonClass = FilterFieldClass(field, table, *columns);
            if (comparisonClass != kvoCC_Unknown)
                spellAsStored(field, table, *columns);
            const auto operation = static_cast<EComparisonOperations>(profile->ReadProfileNumber(section, key("Operation", n), 0));
            QString compareTo;
            if (hasCompareTo(comparisonClass)) {
                compareTo = profile->ReadProfileText(section, key("CompareTo", n), QString());
                if (comparisonClass == kvoCC_Date)
                    compareTo = FilterDateToText(compareTo);
            }
            const auto conjunction = static_cast<EConjunctions>(profile->ReadProfileNumber(section, key("Conjunction", n), kvoCJ_None));
            terms->Add(conjunction, table, field, comparisonClass, operation, compareTo);
        }
    });
    return terms;
}

void CSearchFilter::SaveFilter(const CFilterTerms* terms, const CFilterColumns& columns, IProfile* profile, const QString& userKey,
                               EFilterDatabaseModes mode)
{
    SD_PROC("SaveFilter");
    SD_GUARDED([&] {
        if (!profile)
            return;
        // Clearing first leaves no numbers of a longer filter behind.
        const QString section = _Archive(columns, userKey, mode);
        profile->ClearProfileSection(section);
        if (!terms)
            return;
        int n = 0;
        for (const auto& term : *terms) {
            ++n;
            if (term->Conjunction() != kvoCJ_None)
                profile->WriteProfileNumber(section, key("Conjunction", n), term->Conjunction());
            profile->WriteProfileText(section, key("Field", n), term->Field());
            profile->WriteProfileText(section, key("Table", n), term->Table());
            profile->WriteProfileNumber(section, key("Operation", n), term->Operation());
            switch (term->ComparisonClass()) {
            case kvoCC_Keyword:
            case kvoCC_Text:
            case kvoCC_Numeric:
                profile->WriteProfileText(section, key("CompareTo", n), term->CompareTo());
                break;
            case kvoCC_Date:
                // A term whose date does not read keeps no value; the terms after it are still kept.
                if (const Result<QDateTime> date = ParseDateText(term->CompareTo()))
                    profile->WriteProfileDate(section, key("CompareTo", n), date.value());
                else
                    detail::reportFailure(sd_proc_scope, 0,
                                          QStringLiteral("the compare value \"%1\" of %2 is no date").arg(term->CompareTo(), term->Field()),
                                          __LINE__);
                break;
            default:
                break;
            }
        }
    });
}

QString CSearchFilter::_Archive(const CFilterColumns& columns, const QString& userKey, EFilterDatabaseModes mode)
{
    return columns.BaseTableName() + QLatin1Char('_') + userKey
           + (mode == fltrDBMode_Archive ? QStringLiteral("_Archive") : QString()) + QStringLiteral("_Last_Filter");
}

FilterComparisonClasses CSearchFilter::FilterFieldClass(const QString& field, const QString& table, const CFilterColumns& columns)
{
    SD_PROC("FilterFieldClass");
    FilterComparisonClasses result = kvoCC_Unknown;
    SD_GUARDED([&] {
        const std::shared_ptr<TableStructure>& structure = columns.BaseStructure();
        if (structure && TextEquals(table, structure->name(), 1)) {
            const std::optional<StructureColumn> described = structure->ColumnNamed(field);
            if (!described)
                return;
            // A field that the database no longer has cannot be filtered on.
            if (columns.BaseTable() && !GetTableColumn(columns.BaseTable(), field))
                return;
            result = ComparisonClassFromColumn(&*described);
            return;
        }
        // A search column lives in a table of its own: a term that names another table names no column.
        const std::shared_ptr<CFilterColumn> column = columns.Item(field);
        if (column && TextEquals(table, columns.SearchKeyword(column.get()), 1))
            result = ComparisonClassFromColumn(column.get());
    });
    return result;
}

QString CSearchFilter::FilterDateToText(const QString& text)
{
    SD_PROC("FilterDateToText");
    QString result;
    SD_GUARDED([&] {
        if (!text.startsWith(QLatin1Char('#'))) {
            if (const Result<QDateTime> date = ParseDateText(text))
                result = DateToText(date.value());
            return;
        }
        if (const std::optional<QDateTime> date = readProfileDate(text))
            result = DateToText(*date);
    });
    return result;
}

QString CSearchFilter::SQLSearchFields() const
{
    if (!m_filterColumns)
        return {};
    const Dialect& d = dialectOf(*m_filterColumns);
    const QString searchTable = m_filterColumns->SearchKeyword();
    QString fields;
    for (const auto& column : *m_filterColumns) {
        // Keywords have no field in the search table.
        if (column->ColumnType() == fcKeyword)
            continue;
        if (!fields.isEmpty())
            fields += QLatin1Char(',');
        fields += d.QualifiedName(searchTable, column->Name());
        if (!column->Caption().trimmed().isEmpty())
            fields += QStringLiteral(" AS ") + d.BracketName(column->Caption());
    }
    return fields;
}

QString CSearchFilter::SQLSearchJoinOn() const
{
    if (!m_filterColumns)
        return {};
    const Dialect& d = dialectOf(*m_filterColumns);
    const QString key = m_filterColumns->KeyColumnName();
    return d.QualifiedName(m_filterColumns->BaseTableName(), key) + QStringLiteral(" = ")
           + d.QualifiedName(m_filterColumns->SearchKeyword(), key);
}

QString CSearchFilter::SQLSearchTable() const
{
    if (!m_filterColumns)
        return {};
    for (const auto& column : *m_filterColumns)
        if (column->ColumnType() != fcKeyword)
            return dialectOf(*m_filterColumns).BracketName(m_filterColumns->SearchKeyword());
    return {};
}

} // namespace searchdata
