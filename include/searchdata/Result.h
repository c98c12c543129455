#pragma once

#include <QString>
#include <optional>
#include <utility>

namespace searchdata {

/// A value or the text of why there is none. Used at the public boundary instead of exceptions.
template <typename T>
class Result {
public:
    Result(T value) : m_value(std::move(value)) {}
    static Result failure(QString error) { Result r; r.m_error = std::move(error); return r; }

    bool ok() const { return m_value.has_value(); }
    explicit operator bool() const { return ok(); }
    const T& value() const { return *m_value; }
    T valueOr(T fallback) const { return m_value ? *m_value : std::move(fallback); }
    const QString& error() const { return m_error; }

private:
    Result() = default;
    std::optional<T> m_value;
    QString m_error;
};

} // namespace searchdata
