// Assigns in one turn of the main loop after another until it is killed. At the beginning of a turn
// it tells the number of the one before.
#include "platform/linux/desktop/SettingsStore.h"

#include <QCoreApplication>
#include <QTimer>

#include <cstdio>

using namespace velmora;

namespace
{

/// So much that a write takes a while.
QByteArray dataOfTurn(qint64 turn)
{
    return QByteArray(static_cast<int>(100'000 + turn), 'x');
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    if (argc != 2)
        return 2;
    SettingsStore store(QString::fromLocal8Bit(argv[1]));
    qint64 turn = store.integer(QStringLiteral("turn"));
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        std::printf("%lld\n", static_cast<long long>(turn));
        std::fflush(stdout);
        ++turn;
        store.setInteger(QStringLiteral("turn"), turn);
        store.setData(QStringLiteral("group/data"), dataOfTurn(turn));
        store.setInteger(QStringLiteral("last"), turn);
    });
    timer.start(0);
    return QCoreApplication::exec();
}
