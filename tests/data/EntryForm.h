#pragma once

// One record and the controls of its entry row, bound to the columns the way the entry control binds
// them, for tests that load, edit and save a record.

#include "searchdata/CFilterColumns.h"
#include "searchdata/ISearchBaseEntry.h"
#include "support/FakeControls.h"

#include <map>
#include <memory>

namespace searchdata::test {

struct Entry : ISearchBaseEntry {
    explicit Entry(qint32 id) : id(id) {}
    qint32 Id() const override { return id; }
    qint32 id;
};

/// A fake control for each column, every field marked valid.
class Form {
public:
    explicit Form(CFilterColumns& columns)
    {
        for (const auto& c : columns) {
            if (c->ColumnType() == fcKeyword || c->IsPicklist()) {
                combos[c->Name()] = std::make_unique<FakeComboBox>();
                c->setMyControl(combos[c->Name()].get());
            } else if (c->ColumnType() == fcBoolean) {
                checks[c->Name()] = std::make_unique<FakeCheckBox>();
                c->setMyControl(checks[c->Name()].get());
            } else {
                boxes[c->Name()] = std::make_unique<FakeTextBox>();
                c->setMyControl(boxes[c->Name()].get());
            }
            c->setIsValid(true);
        }
    }
    /// Loads a record and shows its values, as the entry control does.
    static void show(CFilterColumns& columns, const ISearchBaseEntry& entry)
    {
        columns.GetData(&entry);
        for (const auto& c : columns)
            c->ResetData();
    }
    std::map<QString, std::unique_ptr<FakeTextBox>> boxes;
    std::map<QString, std::unique_ptr<FakeCheckBox>> checks;
    std::map<QString, std::unique_ptr<FakeComboBox>> combos;
};

} // namespace searchdata::test
