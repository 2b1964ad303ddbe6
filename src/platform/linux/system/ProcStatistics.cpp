#include "platform/linux/system/ProcStatistics.h"

#include <QDir>

#include <algorithm>
#include <sys/statvfs.h>
#include <utility>

namespace velmora
{

namespace
{

/// The whole text; empty if it cannot be read.
QByteArray readAgain(QFile &file)
{
    if (!file.isOpen() && !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return {};
    QByteArray text = file.seek(0) ? file.readAll() : QByteArray();
    if (text.isEmpty())
        file.close(); // and is opened anew the next time
    return text;
}

/// Takes what comes before the separator, and the separator.
QByteArrayView take(QByteArrayView &rest, char separator)
{
    const qsizetype end = rest.indexOf(separator);
    const QByteArrayView taken = end < 0 ? rest : rest.first(end);
    rest = end < 0 ? QByteArrayView() : rest.sliced(end + 1);
    return taken;
}

/// Takes one number of a line; nothing if there is none.
std::optional<std::uint64_t> takeNumber(QByteArrayView &line)
{
    line = line.trimmed();
    bool isNumber = false;
    const std::uint64_t number = take(line, ' ').toULongLong(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

/// Takes the numbers at the beginning of a line.
template<std::size_t count>
std::array<std::optional<std::uint64_t>, count> takeNumbers(QByteArrayView line)
{
    std::array<std::optional<std::uint64_t>, count> numbers;
    std::generate(numbers.begin(), numbers.end(), [&line] { return takeNumber(line); });
    return numbers;
}

} // namespace

ProcStatistics::ProcStatistics(const QString &procRoot, const QString &sysRoot, QString home)
    : m_stat(procRoot + QLatin1String("/stat"))
    , m_meminfo(procRoot + QLatin1String("/meminfo"))
    , m_netDev(procRoot + QLatin1String("/net/dev"))
    , m_classNet(sysRoot + QLatin1String("/class/net/"))
    , m_home(std::move(home))
{
}

ProcStatistics::ProcStatistics()
    : ProcStatistics(QStringLiteral("/proc"), QStringLiteral("/sys"), QDir::homePath())
{
}

std::map<std::uint64_t, CoreTicks> ProcStatistics::processorTicks()
{
    const QByteArray bytes = readAgain(m_stat);
    QByteArrayView text = bytes;
    std::map<std::uint64_t, CoreTicks> cores;
    // The cores come first; the long lines about interrupts need not be looked at.
    while (text.startsWith("cpu")) {
        const QByteArrayView line = take(text, '\n').sliced(3);
        if (line.startsWith(' '))
            continue; // the sum of all cores
        // Guest time follows, which is part of user time already.
        const auto [core, user, nice, system, idle, ioWait, irq, softIrq, steal] =
            takeNumbers<9>(line);
        if (core && user && nice && system && idle)
            cores[*core] = {*user,
                            *system + irq.value_or(0) + softIrq.value_or(0) + steal.value_or(0),
                            *idle + ioWait.value_or(0), *nice};
    }
    return cores;
}

std::optional<MemorySize> ProcStatistics::memory()
{
    const QByteArray bytes = readAgain(m_meminfo);
    QByteArrayView text = bytes;
    std::map<QByteArrayView, std::uint64_t> values; // in units of 1024 bytes
    while (!text.isEmpty()) {
        QByteArrayView line = take(text, '\n');
        const QByteArrayView key = take(line, ':');
        if (const auto value = takeNumber(line))
            values[key] = *value;
    }
    const auto total = values.find("MemTotal");
    const auto free = values.find("MemFree");
    if (total == values.end() || free == values.end())
        return std::nullopt;
    // In some containers "available" exceeds the total; then, as in `free`, the free memory counts.
    auto available = values.find("MemAvailable");
    if (available == values.end() || available->second > total->second)
        available = free;
    const auto used = total->second - std::min(available->second, total->second);
    return MemorySize{used * 1024, total->second * 1024};
}

NetworkBytes ProcStatistics::networkBytes()
{
    const QByteArray bytes = readAgain(m_netDev);
    QByteArrayView text = bytes;
    NetworkBytes sum;
    while (!text.isEmpty()) {
        // "name: received-bytes, seven more about receiving, sent-bytes, …"; the two lines of
        // headings hold no number and so drop out.
        QByteArrayView line = take(text, '\n');
        const QByteArrayView name = take(line, ':').trimmed();
        const auto numbers = takeNumbers<9>(line);
        if (numbers.front() && numbers.back() && isPhysical(name)) {
            sum.received += *numbers.front();
            sum.sent += *numbers.back();
        }
    }
    return sum;
}

bool ProcStatistics::isPhysical(QByteArrayView interface) const
{
    return !interface.isEmpty() && !interface.contains('/') &&
           QFile::exists(m_classNet + QFile::decodeName(interface.toByteArray()) +
                         QLatin1String("/device"));
}

FileSystemSize ProcStatistics::homeFileSystem()
{
    struct statvfs status = {};
    if (::statvfs(QFile::encodeName(m_home).constData(), &status) != 0)
        return {};
    const auto blockSize = static_cast<double>(status.f_frsize);
    // What the user can fill, as df and file managers have it; the rest is kept for root.
    return {static_cast<double>(status.f_bavail) * blockSize,
            static_cast<double>(status.f_blocks) * blockSize};
}

} // namespace velmora
