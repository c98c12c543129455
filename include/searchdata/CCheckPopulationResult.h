#pragma once

#include <QtGlobal>

namespace searchdata {

/// The outcome of a population check.
class CCheckPopulationResult {
public:
    /// 0 when the check went through; 1 to 5 when the host's answer ended it (another answer goes
    /// on, and the code is 0 again at the end).
    qint32 ResultCode() const { return m_resultCode; }
    void setResultCode(qint32 code) { m_resultCode = code; }
    /// Whether the user cancelled the check; the table in hand then stays as it was.
    bool Cancelled() const { return m_cancelled; }
    void setCancelled(bool cancelled) { m_cancelled = cancelled; }

private:
    qint32 m_resultCode = 0;
    bool m_cancelled = false;
};

} // namespace searchdata
