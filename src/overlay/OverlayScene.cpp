#include "overlay/OverlayScene.h"

#include <QLoggingCategory>
#include <QQuickItem>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(Velmora_ConfigPlugin)
Q_IMPORT_QML_PLUGIN(Velmora_DropPlugin)
Q_IMPORT_QML_PLUGIN(Velmora_MediaPlugin)
Q_IMPORT_QML_PLUGIN(Velmora_OverlayPlugin)
Q_IMPORT_QML_PLUGIN(Velmora_ServicesPlugin)
Q_IMPORT_QML_PLUGIN(Velmora_StylePlugin)
Q_IMPORT_QML_PLUGIN(Velmora_WidgetsPlugin)

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcOverlay, "com.velmora.app.Overlay", QtInfoMsg)

} // namespace

OverlayScene::OverlayScene(StatusMenu &menu)
    : m_menu(menu)
    , m_container(&m_engine)
{
    m_engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    m_container.loadUrl(QUrl(QStringLiteral("qrc:/qt/qml/Velmora/Overlay/NotchContainerView.qml")));
}

void OverlayScene::populate(NotchWindow &window, NotchWindowController &controller)
{
    // Asking an unfinished component for an object is not safe.
    if (!m_container.isReady()) {
        qCCritical(lcOverlay) << "cannot build the notch:" << m_container.errorString();
        return;
    }
    QObject *object = m_container.createWithInitialProperties(
        {{QStringLiteral("controller"), QVariant::fromValue(&controller)},
         {QStringLiteral("menu"), QVariant::fromValue(&m_menu)}});
    auto *item = qobject_cast<QQuickItem *>(object);
    if (item == nullptr) {
        qCCritical(lcOverlay) << "cannot build the notch:" << m_container.errorString();
        delete object;
        return;
    }
    QQmlEngine::setObjectOwnership(item, QQmlEngine::CppOwnership);
    item->setParent(window.contentItem());
    item->setParentItem(window.contentItem());
}

} // namespace velmora
