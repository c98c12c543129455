#pragma once

#include "searchdata/UiServices.h"

#include <QComboBox>
#include <QList>
#include <QWidget>
#include <functional>
#include <gtest/gtest.h>

namespace searchdata::test {

/// The font every widget test and screenshot uses, so that text widths are the same on every machine.
QFont pinnedFont();
/// Sets the pinned font on the application and checks that the family really is installed.
void pinApplicationFont();

/// Runs the event loop until `done` holds or `timeoutMs` passes; true when it held.
bool waitFor(const std::function<bool()>& done, int timeoutMs = 5000);

/// The descendant of `parent` of type T named `name`, or null.
template <typename T>
T* named(const QWidget* parent, const QString& name)
{
    return parent ? parent->findChild<T*>(name) : nullptr;
}

/// Once the next modal window (named `name`, when one is given) is up, hands it to `act`, from the
/// event loop that the code under test runs; a window that never comes fails the test.
void whenModalAppears(std::function<void(QWidget*)> act, const QString& name = {});
/// The same for the next modal window that `which` accepts.
void whenModalAppears(std::function<void(QWidget*)> act, std::function<bool(const QWidget*)> which);

/// Moves the selection of a closed list to `index` with Home and Down, as a user at the keyboard.
void chooseByKeys(QComboBox* combo, int index);

/// The UI services of a user who answers questions from a script: each question takes the next
/// queued answer (or the caller's default when the queue is empty) and is recorded, as are messages.
class ScriptedUiServices : public HeadlessUiServices {
public:
    using HeadlessUiServices::HeadlessUiServices;
    Answer AskYesNoCancel(const QString& title, const QString& text, Answer defaultAnswer) override;
    Answer AskOkCancel(const QString& title, const QString& text, Answer defaultAnswer) override;
    void queueAnswer(Answer answer) { m_answers.append(answer); }
    /// The texts of the questions asked so far.
    const QStringList& questions() const { return m_questions; }

private:
    Answer scriptedAnswer(const QString& text, Answer defaultAnswer);
    QList<Answer> m_answers;
    QStringList m_questions;
};

/// Installs services for the calling thread for the lifetime of the guard, and the headless default after.
class ServicesGuard {
public:
    explicit ServicesGuard(std::shared_ptr<UiServices> services) { UiServices::install(std::move(services)); }
    ~ServicesGuard() { UiServices::install(nullptr); }
    ServicesGuard(const ServicesGuard&) = delete;
    ServicesGuard& operator=(const ServicesGuard&) = delete;
};

} // namespace searchdata::test
