#pragma once

#include <QDateTime>

namespace searchdata {

/// What a population check is asked to do: whether to ask before a change, the mode, and the
/// moment that a column's date default of "now" takes.
class CCheckPopulationArgs {
public:
    /// Mode 0, no question, no date.
    CCheckPopulationArgs() = default;
    /// The same as `Init`.
    CCheckPopulationArgs(bool askFirst, qint32 mode, const QDateTime& defaultDate) { Init(askFirst, mode, defaultDate); }

    /// Sets all three fields.
    void Init(bool askFirst, qint32 mode, const QDateTime& defaultDate)
    {
        m_askFirst = askFirst;
        m_mode = mode;
        m_defaultDate = defaultDate;
    }

    /// 1 repairs without asking; any other mode asks (when `AskFirst`) and changes nothing.
    qint32 Mode() const { return m_mode; }
    void setMode(qint32 mode) { m_mode = mode; }
    /// Whether the host is asked before the first change to a table.
    bool AskFirst() const { return m_askFirst; }
    void setAskFirst(bool askFirst) { m_askFirst = askFirst; }
    /// The "now" of date defaults in the rows that the check adds.
    QDateTime DefaultDate() const { return m_defaultDate; }
    void setDefaultDate(const QDateTime& date) { m_defaultDate = date; }

private:
    qint32 m_mode = 0;
    bool m_askFirst = false;
    QDateTime m_defaultDate;
};

} // namespace searchdata
