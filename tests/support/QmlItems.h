#pragma once

#include <QByteArray>
#include <QList>
#include <QQuickItem>

namespace velmora
{

/// Whether an item is of a type of QML, whose name goes on with a number, or of one made of it.
inline bool isOfType(const QQuickItem &item, const QByteArray &type)
{
    for (const QMetaObject *each = item.metaObject(); each; each = each->superClass()) {
        const QByteArray name(each->className());
        if (name == type || name.startsWith(type + "_QML")) {
            return true;
        }
    }
    return false;
}

/// The visible items of a type inside of another, in the order of the tree.
inline QList<QQuickItem *> qmlItems(const QQuickItem &root, const QByteArray &type)
{
    QList<QQuickItem *> found;
    for (QQuickItem *child : root.childItems()) {
        if (isOfType(*child, type) && child->isVisible()) {
            found << child;
        }
        found << qmlItems(*child, type);
    }
    return found;
}

} // namespace velmora
