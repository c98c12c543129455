#include "cli/CliTestSupport.h"

#include <QDeadlineTimer>
#include <QJsonArray>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

using namespace searchdata::test;

namespace {

class CliValues : public CliTest {
protected:
    void SetUp() override
    {
        CliTest::SetUp();
        if (HasFatalFailure())
            return;
        for (const QStringList& add : {QStringList{"Qty", "--type", "int32"}, QStringList{"Tags", "--type", "keyword", "--size", "12"},
                                       QStringList{"Approved", "--type", "boolean"}, QStringList{"Due", "--type", "datetime"}})
            ASSERT_EQ(run(QStringList{"columns", "add"} + add).exitCode, 0);
    }

    /// The stored values of a record by column name: the value, or the keywords of a keyword column.
    QVariantMap valuesOf(int id) const
    {
        const CliRun shown = run({"--json", "values", "show", "--record", QString::number(id)});
        EXPECT_EQ(shown.exitCode, 0) << shown;
        QVariantMap values;
        for (const auto& v : shown.json()["values"].toArray()) {
            const QJsonObject o = v.toObject();
            values.insert(o["name"].toString(), o.contains("keywords") ? o["keywords"].toVariant() : o["value"].toVariant());
        }
        return values;
    }
};

TEST_F(CliValues, ValuesOfEveryKindAreSavedAndReadBack)
{
    const CliRun set = run({"values", "set", "--record", "4", "PartNo=P-77", "customer=general parts", "Qty=-12", "Approved=True",
                            "Due=2024-05-31 14:30"});
    ASSERT_EQ(set.exitCode, 0) << set;
    EXPECT_TRUE(set.out.contains("P-77")) << set;
    const QVariantMap values = valuesOf(4);
    EXPECT_EQ(values["PartNo"], "P-77");
    EXPECT_EQ(values["Customer"], "General Parts"); // chosen from the list, as the list spells it
    EXPECT_EQ(values["Qty"], -12);
    EXPECT_EQ(values["Approved"], true);
    EXPECT_EQ(values["Due"], "2024-05-31T14:30:00");
    // Only the record named changed.
    EXPECT_EQ(valuesOf(5)["PartNo"], scalar("SELECT PartNo FROM FilesSearchData WHERE Id = 5"));
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM FilesSearchData WHERE Qty = -12").toInt(), 1);
}

TEST_F(CliValues, KeywordsAreAddedOnceAndRemoved)
{
    const CliRun added = run({"keywords", "add", "--record", "3", "Tags", "red", "blue", "red", "Red"});
    ASSERT_EQ(added.exitCode, 0) << added;
    EXPECT_EQ(valuesOf(3)["Tags"].toStringList(), (QStringList{"red", "blue", "Red"}));
    ASSERT_EQ(run({"keywords", "remove", "--record", "3", "Tags", "Red", "BLUE"}).exitCode, 0);
    EXPECT_EQ(valuesOf(3)["Tags"].toStringList(), (QStringList{"red"}));

    const QString before = snapshot();
    SD_EXPECT_FAILS(run({"keywords", "remove", "--record", "3", "Tags", "green"}), 1, "Tags holds no keyword \"green\"");
    SD_EXPECT_FAILS(run({"keywords", "add", "--record", "3", "Tags", "much-too-long-word"}), 1, "at most 12 characters");
    SD_EXPECT_FAILS(run({"keywords", "add", "--record", "3", "PartNo", "x"}), 1, "PartNo is not a keyword column");
    SD_EXPECT_FAILS(run({"values", "set", "--record", "3", "Tags=x"}), 1, "Tags is a keyword column");
    EXPECT_EQ(snapshot(), before);
}

TEST_F(CliValues, AValueThatDoesNotFitLeavesTheRecordAsItWas)
{
    const QString before = snapshot();
    // The valid assignment before the bad one is not saved either.
    SD_EXPECT_FAILS(run({"values", "set", "--record", "2", "PartNo=P-1", "Qty=12x"}), 1, "\"12x\" does not fit the column Qty");
    SD_EXPECT_FAILS(run({"values", "set", "--record", "2", "Qty=99999999999"}), 1, "does not fit the column Qty");
    SD_EXPECT_FAILS(run({"values", "set", "--record", "2", "Approved=maybe"}), 1, "does not fit the column Approved");
    SD_EXPECT_FAILS(run({"values", "set", "--record", "2", "Due=2024-13-45"}), 1, "does not fit the column Due");
    SD_EXPECT_FAILS(run({"values", "set", "--record", "2", "PartNo=123456789012345678901"}), 1, "at most 20 characters");
    SD_EXPECT_FAILS(run({"values", "set", "--record", "2", "PartNo=O'Neil"}), 1, "quotes cannot be entered");
    SD_EXPECT_FAILS(run({"values", "set", "--record", "2", "Customer=Nobody Inc"}), 1,
                    "\"Nobody Inc\" is not in the picklist of Customer, which offers: (blank), Acme Machine");
    SD_EXPECT_FAILS(run({"values", "set", "--record", "2", "Colour=red"}), 1, "no column \"Colour\" in Files");
    SD_EXPECT_FAILS(run({"values", "set", "--record", "2", "PartNo"}), 2, "write COLUMN=VALUE");
    SD_EXPECT_FAILS(run({"values", "show", "--record", "9999"}), 1, "no record with Id 9999 in Files");
    SD_EXPECT_FAILS(run({"values", "show", "--record", "two"}), 2, "not \"two\"");
    SD_EXPECT_FAILS(run({"values", "show"}), 2, "--record is required");
    SD_EXPECT_FAILS(runOn("Parts", {"values", "show", "--record", "1"}), 1, "no base table \"Parts\"");
    EXPECT_EQ(snapshot(), before);
}

TEST_F(CliValues, InitGivesTheDefaultsOfTheColumns)
{
    ASSERT_EQ(run({"columns", "add", "Remarks", "--type", "note", "--default", "none yet"}).exitCode, 0);
    ASSERT_EQ(run({"values", "set", "--record", "6", "Remarks=checked", "Qty=5"}).exitCode, 0);
    ASSERT_EQ(run({"values", "init", "--record", "6"}).exitCode, 0);
    const QVariantMap values = valuesOf(6);
    EXPECT_EQ(values["Remarks"], "none yet");
    EXPECT_EQ(values["Qty"], 0);
    EXPECT_EQ(values["PartNo"], "");
}

TEST_F(CliValues, ATemplateCarriesOneRecordsValuesToAnother)
{
    ASSERT_EQ(run({"values", "set", "--record", "1", "PartNo=P-1", "Qty=7", "Approved=true"}).exitCode, 0);
    ASSERT_EQ(run({"keywords", "add", "--record", "1", "Tags", "red"}).exitCode, 0);
    SD_EXPECT_FAILS(run({"template", "paste", "--record", "2"}), 1, "no template of Files");
    ASSERT_EQ(run({"template", "save", "--record", "1"}).exitCode, 0);
    ASSERT_EQ(run({"template", "paste", "--record", "2"}).exitCode, 0);
    QVariantMap first = valuesOf(1);
    QVariantMap second = valuesOf(2);
    EXPECT_EQ(second, first);
    EXPECT_EQ(second["Tags"].toStringList(), QStringList{"red"});
}

TEST_F(CliValues, ACommandReadsTheRecordAsItStandsOnceItMayWriteIt)
{
    // Another user holds the database, with a keyword added that is not committed yet.
    const QString name = QStringLiteral("other-user");
    {
        QSqlDatabase other = QSqlDatabase::addDatabase("QSQLITE", name);
        other.setDatabaseName(database);
        ASSERT_TRUE(other.open()) << qPrintable(other.lastError().text());
        QSqlQuery q(other);
        ASSERT_TRUE(q.exec("BEGIN IMMEDIATE")) << qPrintable(q.lastError().text());
        ASSERT_TRUE(q.exec("INSERT INTO FilesSearchKeywordTags (Id, Tags) VALUES (3, 'late')")) << qPrintable(q.lastError().text());

        const auto removing = start({"keywords", "remove", "--record", "3", "Tags", "late"});
        QString said;
        const QDeadlineTimer deadline(20000);
        while (!said.contains("waiting for another user") && removing->state() == QProcess::Running && !deadline.hasExpired()) {
            removing->waitForReadyRead(100);
            said += QString::fromUtf8(removing->readAllStandardError());
        }
        EXPECT_TRUE(said.contains("waiting for another user")) << qPrintable(said);
        ASSERT_TRUE(q.exec("COMMIT")) << qPrintable(q.lastError().text());
        ASSERT_TRUE(removing->waitForFinished(60000));
        said += QString::fromUtf8(removing->readAllStandardError());
        // The keyword the other user added is there to remove once the command may write.
        EXPECT_EQ(removing->exitCode(), 0) << qPrintable(said);
    }
    QSqlDatabase::removeDatabase(name);
    EXPECT_EQ(scalar("SELECT COUNT(*) FROM FilesSearchKeywordTags WHERE Id = 3").toInt(), 0);
}

} // namespace
