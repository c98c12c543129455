#pragma once

#include <QValidator>

namespace searchdata {

/// Lets through a text whose every character fits a mask of character classes: before the "/" the
/// classes (U an upper-case letter, L a lower-case letter, D a digit, Z a letter without case, as in
/// Japanese), after it the characters allowed as they stand. So "ULDZ/_" takes a name with
/// underscores and no blank. A key or a paste that would bring in anything else is refused whole.
class KeyMaskValidator : public QValidator {
    Q_OBJECT
public:
    explicit KeyMaskValidator(const QString& mask, QObject* parent = nullptr);

    State validate(QString& input, int& pos) const override;
    /// Whether one character fits the mask.
    bool Passes(QChar c) const;

private:
    QString m_classes;
    QString m_literals;
};

} // namespace searchdata
