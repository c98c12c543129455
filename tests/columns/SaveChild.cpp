// A process that saves column definitions and stops for good in the middle of the save, so that a
// test can kill it there. Arguments: database location, number of columns to add.

#include "searchdata/CCommon.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/SchemaTool.h"
#include "support/SearchFixture.h"

#include <QCoreApplication>
#include <QThread>
#include <cstdio>

using namespace searchdata;

namespace {

class StallingSchemaTool : public SchemaTool {
public:
    bool ApplyStructure(IProgress* progress, Catalog& catalog, const TableStructure& structure) override
    {
        if (++m_calls == 3) {
            std::puts("in the middle of the save");
            std::fflush(stdout);
            for (;;)
                QThread::sleep(1);
        }
        return SchemaTool::ApplyStructure(progress, catalog, structure);
    }

private:
    int m_calls = 0;
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc != 3)
        return 2;
    auto handler = DatabaseHandler::open(QString::fromLocal8Bit(argv[1]));
    if (!handler)
        return 1;
    auto catalog = std::make_shared<Catalog>(handler.value());
    auto filter = CCommon().CreateSearchFilterObject(handler.value(), std::make_shared<test::TestBaseTable>("Files"), catalog, nullptr, 0,
                                                     test::baseStructureOf("Files", {"FileId"}));
    auto columns = filter->FilterColumns();
    if (!columns)
        return 1;
    columns->RemoveColumn("Qty");
    for (int i = 1; i <= std::atoi(argv[2]); ++i)
        columns->Add(QStringLiteral("Extra%1").arg(i), {}, {}, i % 2 ? fcText : fcKeyword, 20, false, false);
    columns->setSchemaTool(std::make_shared<StallingSchemaTool>());
    columns->ColumnsSave(nullptr);
    return 0;
}
