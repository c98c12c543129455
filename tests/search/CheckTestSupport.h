#pragma once

#include "searchdata/DatabaseHandler.h"
#include "searchdata/Progress.h"
#include "support/TestDatabase.h"

#include <QElapsedTimer>
#include <QList>
#include <QStringList>
#include <QThread>
#include <functional>

namespace searchdata::test {

/// A host that answers every schema question with `answer` and remembers what it was asked.
struct ScriptedHost {
    struct Question {
        QString table;
        int flag;
    };
    void attach(DatabaseHandler& db)
    {
        db.setQueryConversion([this](const QString&, const QString& table, int flag) {
            questions.append({table, flag});
            return answer;
        });
    }
    int answer = 0;
    QList<Question> questions;
};

/// Progress that keeps what it was told, with the time of each progress line; it can be made to
/// cancel at a status text, and to take its time over each cancel test.
class RecordingProgress : public IProgress {
public:
    RecordingProgress() { clock.start(); }
    void SetStatus(const QString& text) override
    {
        statuses << text;
        if (!cancelAtStatus.isEmpty() && text == cancelAtStatus)
            cancelled = true;
    }
    void SetProgress(const QString& text) override
    {
        lines << text;
        times << clock.elapsed();
    }
    bool Cancelled() const override
    {
        if (slowCancelTestMs > 0)
            QThread::msleep(slowCancelTestMs);
        return cancelled;
    }

    QStringList statuses;
    QStringList lines;
    QList<qint64> times;
    QString cancelAtStatus;
    bool cancelled = false;
    int slowCancelTestMs = 0;
    QElapsedTimer clock;
};

/// Runs `change` with foreign keys not enforced on the test's connection, to make rows whose record
/// is gone as another program might have left them.
inline void withoutForeignKeys(TestDatabase& testDb, const std::function<void()>& change)
{
    const bool sqlite = testDb.kind() == DbKind::SQLite;
    SD_ASSERT_SQL(testDb, sqlite ? "PRAGMA foreign_keys = OFF" : "SET session_replication_role = replica");
    change();
    SD_ASSERT_SQL(testDb, sqlite ? "PRAGMA foreign_keys = ON" : "SET session_replication_role = DEFAULT");
}

} // namespace searchdata::test
