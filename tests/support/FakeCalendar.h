#pragma once

#include "platform/CalendarStore.h"
#include "platform/ReminderStore.h"

#include <QStringList>

#include <deque>
#include <functional>
#include <utility>

namespace velmora
{

/// Answers that wait until a test gives them.
class PendingAnswers
{
public:
    template<typename Answer, typename Value>
    void put(const Answer &answer, const Value &value)
    {
        m_answers.emplace_back([answer, value] { answer(value); });
    }

    /// In the order of the questions, those included that come meanwhile.
    void give()
    {
        while (!m_answers.empty()) {
            giveOne();
        }
    }
    void giveOne() { take(m_answers.begin()); }
    void giveLast() { take(std::prev(m_answers.end())); }

private:
    using Answers = std::deque<std::function<void()>>;

    void take(Answers::iterator place)
    {
        const auto answer = *place;
        m_answers.erase(place);
        answer();
    }

    Answers m_answers;
};

/// Calendars that a test fills. A question is answered by how things were when it was asked.
class FakeCalendarStore final : public CalendarStore
{
public:
    bool isGranted = true;
    std::optional<std::vector<CalendarEvent>> events = std::vector<CalendarEvent>{};
    QStringList questions;
    PendingAnswers answers;

    void requestAccess(QObject *, AccessAnswer done) override
    {
        questions << QStringLiteral("request");
        answers.put(done, isGranted);
    }
    void checkAccess(QObject *, AccessAnswer done) override
    {
        questions << QStringLiteral("check");
        answers.put(done, isGranted);
    }
    void fetchEvents(const QDateTime &from, const QDateTime &to, QObject *,
                     EventsAnswer done) override
    {
        const QString format = QStringLiteral("d. hh:mm:ss");
        questions << from.toString(format) + QStringLiteral(" to ") + to.toString(format);
        answers.put(done, events);
    }
};

/// Reminders that a test fills. What is asked for is done at once, and answered later.
class FakeReminderStore final : public ReminderStore
{
public:
    bool isGranted = true;
    bool isWorking = true;
    std::vector<Reminder> open;
    QStringList questions; ///< for access
    QStringList calls;     ///< that change something
    int fetches = 0;
    PendingAnswers answers;

    void requestAccess(QObject *, AccessAnswer done) override
    {
        questions << QStringLiteral("request");
        answers.put(done, isGranted);
    }
    void checkAccess(QObject *, AccessAnswer done) override
    {
        questions << QStringLiteral("check");
        answers.put(done, isGranted);
    }
    void fetchOpen(QObject *, RemindersAnswer done) override
    {
        ++fetches;
        answers.put(done, isWorking ? std::optional(open) : std::nullopt);
    }
    void add(const QString &title, QObject *, AddAnswer done) override
    {
        calls << QStringLiteral("add ") + title;
        std::optional<QString> id;
        if (isWorking) {
            id = QStringLiteral("added-%1").arg(++m_added);
            open.push_back({*id, title, std::nullopt});
        }
        answers.put(done, id);
    }
    void complete(const QString &id, QObject *, DoneAnswer done) override
    {
        close(QStringLiteral("complete "), id, done);
    }
    void remove(const QString &id, QObject *, DoneAnswer done) override
    {
        close(QStringLiteral("remove "), id, done);
    }

private:
    void close(const QString &what, const QString &id, const DoneAnswer &done)
    {
        calls << what + id;
        if (isWorking) {
            std::erase_if(open, [&id](const Reminder &each) { return each.id == id; });
        }
        answers.put(done, isWorking);
    }

    int m_added = 0;
};

} // namespace velmora
