#include "app/LoginPrompt.h"

#include <QLoggingCategory>
#include <QQmlComponent>
#include <QQmlEngine>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcLoginPrompt, "com.velmora.app.AppDelegate", QtInfoMsg)

} // namespace

LoginPrompt::~LoginPrompt()
{
    delete m_window;
}

void LoginPrompt::ask(const std::function<void()> &accepted)
{
    m_accepted = accepted;
    QQmlComponent component(&m_engine,
                            QUrl(QStringLiteral("qrc:/qt/qml/Velmora/App/LoginItemAlert.qml")));
    QObject *object = component.create();
    m_window = qobject_cast<QQuickWindow *>(object);
    if (m_window == nullptr) {
        qCCritical(lcLoginPrompt) << "cannot put the question:" << component.errorString();
        delete object;
        return;
    }
    // The signals are the view's own; only their names are known here.
    connect(m_window, SIGNAL(accepted()), this, SLOT(accept()));
    connect(m_window, SIGNAL(finished()), m_window, SLOT(deleteLater()));
    m_window->show();
    m_window->requestActivate();
}

void LoginPrompt::accept()
{
    m_accepted();
}

} // namespace velmora
