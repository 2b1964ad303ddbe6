#pragma once

#include "config/NotchProfile.h"

#include <QAbstractListModel>
#include <QtQml/qqml.h>

namespace velmora
{

/// The profiles in their order, one of which is active, for views with the
/// roles `name` and `isActive`. Only the manager changes it.
class NotchProfileList : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Handed down to the views")

public:
    enum Role { NameRole = Qt::UserRole, IsActiveRole };

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] const std::vector<NotchProfile> &all() const { return m_profiles; }
    [[nodiscard]] int activeIndex() const { return m_activeIndex; }
    [[nodiscard]] bool contains(int index) const { return index >= 0 && index < rowCount(); }

    void append(NotchProfile profile);
    void remove(int index);
    void rename(int index, const QString &name);
    void activate(int index);

private:
    std::vector<NotchProfile> m_profiles;
    int m_activeIndex = 0;
};

} // namespace velmora
