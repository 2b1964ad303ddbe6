#include "drop/FileNaming.h"

namespace velmora
{

namespace
{

/// Where the point before the extension is; -1 if there is none.
qsizetype extensionPoint(const QByteArray &path)
{
    const qsizetype nameStart = path.lastIndexOf('/') + 1;
    const qsizetype point = path.lastIndexOf('.');
    return point > nameStart && point < path.size() - 1 ? point : -1;
}

/// As unzip sees it: a backslash takes the meaning from the character behind it.
bool hasWildcards(const QByteArray &path)
{
    for (qsizetype i = 0; i < path.size(); ++i) {
        if (path.at(i) == '\\') {
            ++i;
        } else if (QByteArrayView("?*[").contains(path.at(i))) {
            return true;
        }
    }
    return false;
}

} // namespace

QByteArray pathExtension(const QByteArray &path)
{
    const qsizetype point = extensionPoint(path);
    return point < 0 ? QByteArray() : path.mid(point + 1);
}

QByteArray withoutPathExtension(const QByteArray &path)
{
    const qsizetype point = extensionPoint(path);
    return point < 0 ? path : path.left(point);
}

QByteArray uniqueURL(const QByteArray &name, int attempt)
{
    if (attempt == 0) {
        return name;
    }
    const QByteArray stem = withoutPathExtension(name);
    return stem + ' ' + QByteArray::number(attempt) + name.mid(stem.size());
}

QByteArray unzipArgument(const QByteArray &path)
{
    if (!hasWildcards(path)) {
        return path;
    }
    // Only the last component is matched. A backslash in front of every special character would
    // not do: without a wildcard left, it is taken as it stands.
    const qsizetype nameStart = path.lastIndexOf('/') + 1;
    QByteArray argument = path.left(nameStart);
    for (const char character : path.mid(nameStart)) {
        if (character == '\\') {
            argument += "\\\\";
        } else if (QByteArrayView("?*[").contains(character)) {
            argument.append('[').append(character).append(']');
        } else {
            argument += character;
        }
    }
    return argument;
}

} // namespace velmora
