#include "FilterTestSupport.h"

#include "searchdata/CFilterTerms.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/Value.h"

#include <QSqlQuery>

using namespace searchdata;
using namespace searchdata::test;

namespace {

// Parts with a search table (Maker, Price, Weight, Made, Checked) and the keyword column Tag.
// The part numbered 5 has no search row.
class FilterTermsSql : public DatabaseTest {
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        if (HasFatalFailure())
            return;
        DatabaseHandler& h = db();
        SD_ASSERT_SQL(testDb(), createTableSql(h, "Parts", "PartId", {{"Name", adVarWChar}, {"Active", adBoolean}}));
        for (const QString& sql : searchTableSql(h, "Parts", "PartId",
                                                 {{"Maker", adVarWChar}, {"Price", adDouble}, {"Weight", adSingle}, {"Made", adDate}, {"Checked", adBoolean}}))
            SD_ASSERT_SQL(testDb(), sql);
        for (const QString& sql : keywordTableSql(h, "Parts", "PartId", "Tag"))
            SD_ASSERT_SQL(testDb(), sql);

        const QString t = h.SqlBoolean(true), f = h.SqlBoolean(false);
        const QString parts[] = {"1, 'Bolt', " + t, "2, 'Nut', " + f, "3, 'Gear', " + t, "4, 'Shaft', " + f, "5, 'Spring', " + t};
        for (const QString& values : parts)
            SD_ASSERT_SQL(testDb(), "INSERT INTO " + h.BracketName("Parts") + " VALUES (" + values + ")");
        const QString search[] = {
            "1, 'Acme', 10.5, NULL, " + h.SqlDate(QDateTime(QDate(2003, 7, 4), QTime(0, 0))) + ", " + t,
            "2, 'Acme', 20, NULL, NULL, " + f,
            "3, " + h.SqlQuote("O'Neil") + ", 30, NULL, NULL, NULL",
            "4, " + h.SqlQuote("Acme") + ", NULL, NULL, NULL, " + t,
        };
        for (const QString& values : search)
            SD_ASSERT_SQL(testDb(), "INSERT INTO " + h.BracketName("PartsSearchData") + " VALUES (" + values + ")");
        const QString tags[] = {"1, 'red'", "2, 'blue'", "3, 'red'", "4, 'red'", "4, 'blue'", "5, 'red'"};
        for (const QString& values : tags)
            SD_ASSERT_SQL(testDb(), "INSERT INTO " + h.BracketName("PartsSearchKeywordTag") + " VALUES (" + values + ")");

        m_search = openSearch(m_db->handler(), "Parts", "PartId", {{"Name", adVarWChar}, {"Active", adBoolean}});
        ASSERT_TRUE(m_search && m_search->FilterColumns());
        m_columns = m_search->FilterColumns();
        ASSERT_TRUE(m_columns->Add("Maker", "", "", fcText, 50, false, false));
        ASSERT_TRUE(m_columns->Add("Price", "", "", fcDouble, 0, false, false));
        ASSERT_TRUE(m_columns->Add("Weight", "", "", fcSingle, 0, false, false));
        ASSERT_TRUE(m_columns->Add("Made", "", "", fcDateTime, 0, false, false));
        ASSERT_TRUE(m_columns->Add("Checked", "", "", fcBoolean, 0, false, false));
        ASSERT_TRUE(m_columns->Add("Tag", "", "", fcKeyword, 20, false, false));
        m_terms = std::make_shared<CFilterTerms>(m_columns);
    }

    void TearDown() override
    {
        m_terms.reset();
        m_columns.reset();
        m_search.reset();
        DatabaseTest::TearDown();
    }

    bool onPostgres() const { return GetParam() == DbKind::PostgreSQL; }

    /// The SQLite text of the statement in this database's quoting: [name] becomes "name" on PostgreSQL.
    QString quoted(QString sqliteText) const
    {
        if (onPostgres())
            sqliteText.replace('[', '"').replace(']', '"');
        return sqliteText;
    }

    void addSearchTerm(EConjunctions conjunction, const QString& field, FilterComparisonClasses cls, EComparisonOperations op,
                       const QString& compareTo)
    {
        ASSERT_TRUE(m_terms->Add(conjunction, "PartsSearchData", field, cls, op, compareTo));
    }

    /// The parts that a predicate selects, in order; the test fails when the database refuses it.
    QList<qint64> partsWhere(const QString& predicate, const QVariantList& values = {}, bool* ran = nullptr)
    {
        QString sql = "SELECT " + db().BracketName("PartId") + " FROM " + db().BracketName("Parts");
        if (!predicate.isEmpty())
            sql += " WHERE " + predicate;
        sql += " ORDER BY 1";
        auto rows = values.isEmpty() ? db().OpenSqlRecordset(sql) : db().OpenSqlRecordset(sql, values);
        if (ran)
            *ran = rows != nullptr;
        EXPECT_TRUE(rows) << qPrintable(db().lastError()) << "\n  in: " << qPrintable(sql);
        QList<qint64> result;
        for (; rows && !rows->EndOfFile(); rows->MoveNext())
            result << rows->field("PartId").toDouble().valueOr(-1);
        return result;
    }

    std::shared_ptr<CSearchFilter> m_search;
    std::shared_ptr<CFilterColumns> m_columns;
    std::shared_ptr<CFilterTerms> m_terms;
};

TEST_P(FilterTermsSql, ATextAndAKeywordTermGiveOneMembershipTest)
{
    addSearchTerm(kvoCJ_None, "Maker", kvoCC_Text, kvoOP_Equals, "Acme");
    ASSERT_TRUE(m_terms->Add(kvoCJ_And, "PartsSearchKeywordTag", "Tag", kvoCC_Keyword, kvoOP_Includes, "red"));

    const QString keywordText = quoted(
        " AND [Parts].[PartId] IN (SELECT [Parts].[PartId] FROM [Parts], [PartsSearchKeywordTag] WHERE [Parts].[PartId] = "
        "[PartsSearchKeywordTag].[PartId] AND [PartsSearchKeywordTag].[Tag] = 'red')");
    const QString expected = quoted("[Parts].[PartId] IN (SELECT [Parts].[PartId] FROM [Parts] INNER JOIN [PartsSearchData] ON "
                                    "[Parts].[PartId] = [PartsSearchData].[PartId] WHERE ([PartsSearchData].[Maker] = 'Acme'")
                             + keywordText + "))";
    EXPECT_EQ(m_terms->SQLString(), expected);
    EXPECT_EQ(partsWhere(m_terms->SQLString()), (QList<qint64>{1, 4}));
}

TEST_P(FilterTermsSql, ConjunctionsFollowThePreviousTermAndNeverLeadTheFilter)
{
    // A first term with a conjunction stands without it; a later term without one is joined by AND.
    addSearchTerm(kvoCJ_OR, "Maker", kvoCC_Text, kvoOP_Equals, "Acme");
    addSearchTerm(kvoCJ_None, "Checked", kvoCC_Boolean, kvoOP_IsTrue, "");
    EXPECT_TRUE(m_terms->SQLString().contains(quoted("WHERE ([PartsSearchData].[Maker] = 'Acme' AND [PartsSearchData].[Checked] <> ")))
        << qPrintable(m_terms->SQLString());
    EXPECT_EQ(partsWhere(m_terms->SQLString()), (QList<qint64>{1, 4}));

    // A term without a conjunction repeats the one before it.
    m_terms->Clear();
    addSearchTerm(kvoCJ_None, "Maker", kvoCC_Text, kvoOP_Equals, "Zed");
    addSearchTerm(kvoCJ_OR, "Maker", kvoCC_Text, kvoOP_Equals, "O'Neil");
    addSearchTerm(kvoCJ_None, "Price", kvoCC_Numeric, kvoOP_Equals, "20");
    EXPECT_TRUE(m_terms->SQLString().contains(quoted(" OR [PartsSearchData].[Price] = 20))"))) << qPrintable(m_terms->SQLString());
    EXPECT_EQ(partsWhere(m_terms->SQLString()), (QList<qint64>{2, 3}));

    // A first term that gives no text leaves no conjunction for the next, but its join stands.
    m_terms->Clear();
    addSearchTerm(kvoCJ_None, "Maker", kvoCC_Text, kvoOP_IsTrue, "Acme");
    ASSERT_TRUE(m_terms->Add(kvoCJ_And, "Parts", "Name", kvoCC_Text, kvoOP_Equals, "Spring"));
    EXPECT_EQ(m_terms->SQLString(), quoted("[Parts].[PartId] IN (SELECT [Parts].[PartId] FROM [Parts] INNER JOIN [PartsSearchData] ON "
                                           "[Parts].[PartId] = [PartsSearchData].[PartId] WHERE ([Parts].[Name] = 'Spring'))"));
    EXPECT_TRUE(partsWhere(m_terms->SQLString()).isEmpty()) << "part 5 has no search row";
}

TEST_P(FilterTermsSql, TermsOnKeywordsAndBaseFieldsAloneNeedNoJoin)
{
    ASSERT_TRUE(m_terms->Add(kvoCJ_None, "PartsSearchKeywordTag", "Tag", kvoCC_Keyword, kvoOP_Excludes, "blue"));
    EXPECT_FALSE(m_terms->SQLString().contains("JOIN"));
    EXPECT_TRUE(m_terms->SQLString().contains(quoted("WHERE ([Parts].[PartId] NOT IN (SELECT")));
    EXPECT_EQ(partsWhere(m_terms->SQLString()), (QList<qint64>{1, 3, 5}));

    ASSERT_TRUE(m_terms->Add(kvoCJ_And, "Parts", "Active", kvoCC_Boolean, kvoOP_IsTrue, ""));
    ASSERT_TRUE(m_terms->Add(kvoCJ_And, "Parts", "Name", kvoCC_Text, kvoOP_Less, "Spring"));
    EXPECT_FALSE(m_terms->SQLString().contains("JOIN"));
    EXPECT_EQ(partsWhere(m_terms->SQLString()), (QList<qint64>{1, 3}));
}

TEST_P(FilterTermsSql, BooleanTermsCompareWithFalse)
{
    addSearchTerm(kvoCJ_None, "Checked", kvoCC_Boolean, kvoOP_IsTrue, "ignored");
    EXPECT_TRUE(m_terms->SQLString().endsWith(quoted("WHERE ([PartsSearchData].[Checked] <> ") + db().SqlBoolean(false) + "))"))
        << qPrintable(m_terms->SQLString());
    EXPECT_EQ(partsWhere(m_terms->SQLString()), (QList<qint64>{1, 4}));

    m_terms->Item(1)->setOperation(kvoOP_IsFalse);
    EXPECT_EQ(partsWhere(m_terms->SQLString()), (QList<qint64>{2})) << "a null is neither true nor false";
}

TEST_P(FilterTermsSql, EveryLikeSpellsOutItsEscape)
{
    addSearchTerm(kvoCJ_None, "Maker", kvoCC_Text, kvoOP_IsLike, "A%");
    const QString sql = m_terms->SQLString();
    EXPECT_TRUE(sql.endsWith(" ESCAPE '\\'))")) << qPrintable(sql);
    EXPECT_EQ(partsWhere(sql), (QList<qint64>{1, 2, 4}));

    m_terms->Item(1)->setOperation(kvoOP_IsNotLike);
    EXPECT_EQ(partsWhere(m_terms->SQLString()), (QList<qint64>{3}));
}

TEST_P(FilterTermsSql, ABackslashInALikePatternEscapesAlikeOnEveryDatabase)
{
    const QString makers[] = {"a\\b", "ab", "a%b", "a_b"};
    for (int part = 1; part <= 4; ++part)
        SD_ASSERT_SQL(testDb(), "UPDATE " + db().BracketName("PartsSearchData") + " SET " + db().BracketName("Maker") + " = "
                                    + db().SqlQuote(makers[part - 1]) + " WHERE " + db().BracketName("PartId") + " = " + QString::number(part));
    const struct {
        QString pattern;
        QList<qint64> parts;
    } cases[] = {
        {"a\\b", {2}},          // an escaped letter is that letter
        {"a\\\\b", {1}},        // an escaped backslash is a backslash
        {"a\\%b", {3}},
        {"a\\_b", {4}},
        {"a_b", {1, 3, 4}},
        {"a%b", {1, 2, 3, 4}},
        {"a\\", {}},            // ends in its escape, which escapes nothing: no record, and a report
    };
    addSearchTerm(kvoCJ_None, "Maker", kvoCC_Text, kvoOP_IsLike, "");
    for (const auto& c : cases) {
        m_terms->Item(1)->setCompareTo(c.pattern);
        Diagnostics::instance().clearReports();
        EXPECT_EQ(partsWhere(m_terms->SQLString()), c.parts) << qPrintable(c.pattern);
        const ParameterizedSql bound = m_terms->SQLStringWithParameters();
        EXPECT_EQ(partsWhere(bound.sql, bound.values), c.parts) << qPrintable(c.pattern);
        EXPECT_EQ(Diagnostics::instance().reportCount() > 0, c.parts.isEmpty()) << qPrintable(c.pattern);
    }
}

TEST_P(FilterTermsSql, QuotesInCompareTextsMakeValidLiterals)
{
    addSearchTerm(kvoCJ_None, "Maker", kvoCC_Text, kvoOP_Equals, "O'Neil");
    EXPECT_TRUE(m_terms->SQLString().contains("= 'O''Neil'")) << qPrintable(m_terms->SQLString());
    EXPECT_EQ(partsWhere(m_terms->SQLString()), (QList<qint64>{3}));

    SD_ASSERT_SQL(testDb(), "UPDATE " + db().BracketName("PartsSearchData") + " SET " + db().BracketName("Maker") + " = "
                                + db().SqlQuote("say \"O'Neil\"") + " WHERE " + db().BracketName("PartId") + " = 2");
    m_terms->Item(1)->setCompareTo("say \"O'Neil\"");
    EXPECT_TRUE(m_terms->SQLString().contains("= 'say \"O''Neil\"'")) << qPrintable(m_terms->SQLString());
    EXPECT_EQ(partsWhere(m_terms->SQLString()), (QList<qint64>{2}));
}

TEST_P(FilterTermsSql, AnEmptyFilterIsBlank)
{
    EXPECT_FALSE(m_terms->HasTerms());
    EXPECT_EQ(m_terms->SQLString(), QString());
    EXPECT_TRUE(m_terms->SQLStringWithParameters().sql.isEmpty());
}

TEST_P(FilterTermsSql, AValueThatDoesNotConvertMatchesNoRecordAndIsReported)
{
    struct Term {
        EConjunctions conjunction;
        const char* field;
        FilterComparisonClasses cls;
        EComparisonOperations op;
        const char* compareTo;
    };
    struct Case {
        QList<Term> terms;
        QList<qint64> parts;
        int reports;
    };
    const Term priceOver10{kvoCJ_None, "Price", kvoCC_Numeric, kvoOP_Greater, "10"};
    const Term noDate{kvoCJ_And, "Made", kvoCC_Date, kvoOP_Equals, "2003-02-30"};
    const Case cases[] = {
        {{priceOver10, noDate}, {}, 1},
        {{{kvoCJ_None, "Price", kvoCC_Numeric, kvoOP_Greater, "cheap"}, noDate}, {}, 2},
        {{{kvoCJ_None, "Price", kvoCC_Numeric, kvoOP_Greater, "cheap"}, {kvoCJ_OR, "Made", kvoCC_Date, kvoOP_Equals, "2003-07-04"}}, {1}, 1},
        // A term without a conjunction takes the one before it.
        {{priceOver10, {kvoCJ_OR, "Made", kvoCC_Date, kvoOP_Equals, "soon"}, {kvoCJ_None, "Maker", kvoCC_Text, kvoOP_Equals, "Acme"}}, {1, 2, 3, 4}, 1},
    };
    for (const Case& c : cases) {
        m_terms->Clear();
        for (const Term& t : c.terms)
            addSearchTerm(t.conjunction, t.field, t.cls, t.op, t.compareTo);
        SCOPED_TRACE(m_terms->SQLString().toStdString());
        Diagnostics::instance().clearReports();
        const QString sql = m_terms->SQLString();
        EXPECT_EQ(Diagnostics::instance().reportCount(), c.reports);
        EXPECT_FALSE(sql.isEmpty()) << "a filter that selects nothing is no empty filter";
        EXPECT_EQ(partsWhere(sql), c.parts);
        const ParameterizedSql bound = m_terms->SQLStringWithParameters();
        EXPECT_EQ(partsWhere(bound.sql, bound.values), c.parts);
    }
}

TEST_P(FilterTermsSql, SingleColumnsMatchTheNumberAsTyped)
{
    // Stored as the library stores a single: through its bound form.
    ASSERT_TRUE(db().ExecuteSql("UPDATE " + db().BracketName("PartsSearchData") + " SET " + db().BracketName("Weight")
                                    + " = ? WHERE " + db().BracketName("PartId") + " = 3",
                                QVariantList{Value(0.1f).toVariant()}));
    addSearchTerm(kvoCJ_None, "Weight", kvoCC_Numeric, kvoOP_Equals, "0.1");
    EXPECT_EQ(partsWhere(m_terms->SQLString()), (QList<qint64>{3})) << qPrintable(m_terms->SQLString());
    const ParameterizedSql bound = m_terms->SQLStringWithParameters();
    EXPECT_EQ(partsWhere(bound.sql, bound.values), (QList<qint64>{3})) << qPrintable(bound.sql);
}

TEST_P(FilterTermsSql, BoundParametersCarryTheCompareValuesInOrder)
{
    addSearchTerm(kvoCJ_None, "Maker", kvoCC_Text, kvoOP_Equals, "Acme");
    addSearchTerm(kvoCJ_And, "Price", kvoCC_Numeric, kvoOP_Less, "15");
    addSearchTerm(kvoCJ_OR, "Made", kvoCC_Date, kvoOP_GreatorOrEqual, "7/4/2003");
    addSearchTerm(kvoCJ_OR, "Price", kvoCC_Numeric, kvoOP_Equals, "30.0");
    ASSERT_TRUE(m_terms->Add(kvoCJ_And, "PartsSearchKeywordTag", "Tag", kvoCC_Keyword, kvoOP_Includes, "red"));

    const ParameterizedSql bound = m_terms->SQLStringWithParameters();
    ASSERT_EQ(bound.values.size(), 5);
    EXPECT_EQ(bound.sql.count('?'), 5);
    EXPECT_EQ(bound.values[0], QVariant(QString("Acme")));
    EXPECT_EQ(bound.values[1], QVariant(qint64(15)));
    EXPECT_EQ(bound.values[2], QVariant(QDateTime(QDate(2003, 7, 4), QTime(0, 0))));
    EXPECT_EQ(bound.values[3], QVariant(30.0));
    EXPECT_EQ(bound.values[4], QVariant(QString("red")));
    EXPECT_FALSE(bound.sql.contains("Acme"));
    EXPECT_EQ(partsWhere(bound.sql, bound.values), partsWhere(m_terms->SQLString()));
    EXPECT_EQ(partsWhere(m_terms->SQLString()), (QList<qint64>{1, 3}));
}

SD_INSTANTIATE_DATABASE_SUITE(FilterTermsSql);

} // namespace
