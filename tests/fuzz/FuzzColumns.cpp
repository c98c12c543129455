#include "fuzz/FuzzColumns.h"

#include "searchdata/CFilterColumns.h"

namespace searchdata::fuzz {

void addEveryColumnType(CFilterColumns& columns)
{
    columns.Add(QStringLiteral("Customer"), QStringLiteral("Client"), {}, fcText, 40, false, false);
    columns.Add(QStringLiteral("Qty"), {}, {}, fcInteger16, 0, false, false);
    columns.Add(QStringLiteral("Count"), {}, {}, fcInteger32, 0, false, false);
    columns.Add(QStringLiteral("Ratio"), {}, {}, fcSingle, 0, false, false);
    columns.Add(QStringLiteral("Price"), {}, {}, fcDouble, 0, false, false);
    columns.Add(QStringLiteral("Due"), {}, {}, fcDateTime, 0, false, false);
    columns.Add(QStringLiteral("Done"), {}, {}, fcBoolean, 0, false, false);
    columns.Add(QStringLiteral("Tags"), {}, {}, fcKeyword, 30, false, false);
    columns.Add(QStringLiteral("Codes"), {}, {}, fcKeyword, 30, true, true);
    columns.Add(QStringLiteral("Remarks"), {}, {}, fcNote, 255, false, false);
    columns.Add(QStringLiteral("Colour"), {}, {}, fcText, 20, true, false, QStringLiteral("red"));
}

} // namespace searchdata::fuzz
