#include "platform/linux/desktop/AutostartLoginItem.h"

#include <QByteArray>
#include <QDir>
#include <QSaveFile>
#include <QStandardPaths>

#include <utility>

namespace velmora
{

namespace
{

// One word of a command line: between quotation marks, with these four escaped; a percent sign
// would start a field code.
QString quoteWord(const QString &word)
{
    QString quoted;
    for (const QChar character : word) {
        if (character == u'"' || character == u'`' || character == u'$' || character == u'\\')
            quoted += u'\\';
        else if (character == u'%')
            quoted += u'%';
        quoted += character;
    }
    return u'"' + quoted + u'"';
}

// The escapes of every string in a desktop entry, applied after those of the command line.
QString escapeValue(QString value)
{
    return value.replace(u'\\', QLatin1String("\\\\"))
        .replace(u'\n', QLatin1String("\\n"))
        .replace(u'\r', QLatin1String("\\r"))
        .replace(u'\t', QLatin1String("\\t"));
}

QByteArray entryFor(const QString &program)
{
    return QByteArrayLiteral(
               "[Desktop Entry]\n"
               "Type=Application\n"
               "Name=Velmora\n"
               "Comment=A strip at the top of each screen that opens into a panel of widgets\n"
               "Icon=com.velmora.app\n"
               "Exec=") +
           escapeValue(quoteWord(program)).toUtf8() +
           QByteArrayLiteral("\nTerminal=false\n"
                             "StartupNotify=false\n"
                             "X-GNOME-Autostart-enabled=true\n");
}

} // namespace

AutostartLoginItem::AutostartLoginItem(QString program)
    : m_program(std::move(program))
{
}

std::optional<QString> AutostartLoginItem::registerItem()
{
    if (!QDir::isAbsolutePath(m_program))
        return QStringLiteral("The path of the program is not known");
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                           QLatin1String("/autostart");
    if (!QDir().mkpath(folder))
        return QStringLiteral("The folder %1 cannot be created").arg(folder);

    QSaveFile file(folder + QLatin1String("/velmora.desktop"));
    const QByteArray entry = entryFor(m_program);
    if (!file.open(QIODevice::WriteOnly) || file.write(entry) != entry.size() || !file.commit())
        return QStringLiteral("%1: %2").arg(file.fileName(), file.errorString());
    return std::nullopt;
}

} // namespace velmora
