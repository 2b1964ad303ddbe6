#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickWindow>

#include <functional>

class QQmlEngine;

namespace velmora
{

/// Puts the question whether to start at login, in a window of its own.
class LoginPrompt : public QObject
{
    Q_OBJECT

public:
    explicit LoginPrompt(QQmlEngine &engine)
        : m_engine(engine)
    {
    }
    ~LoginPrompt() override;

    /// Shows the question; `accepted` runs if the user agrees, nothing otherwise.
    void ask(const std::function<void()> &accepted);

private Q_SLOTS:
    void accept();

private:
    QQmlEngine &m_engine;
    std::function<void()> m_accepted;
    QPointer<QQuickWindow> m_window;
};

} // namespace velmora
