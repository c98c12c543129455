#pragma once

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(lcDiagnostics)
Q_DECLARE_LOGGING_CATEGORY(lcDatabase)
Q_DECLARE_LOGGING_CATEGORY(lcSchema)
