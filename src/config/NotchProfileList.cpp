#include "config/NotchProfileList.h"

#include <utility>

namespace velmora
{

int NotchProfileList::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_profiles.size());
}

QVariant NotchProfileList::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || !contains(index.row())) {
        return {};
    }
    switch (role) {
    case NameRole:
        return m_profiles.at(static_cast<std::size_t>(index.row())).name;
    case IsActiveRole:
        return index.row() == m_activeIndex;
    default:
        return {};
    }
}

QHash<int, QByteArray> NotchProfileList::roleNames() const
{
    return {{NameRole, "name"}, {IsActiveRole, "isActive"}};
}

void NotchProfileList::append(NotchProfile profile)
{
    beginInsertRows({}, rowCount(), rowCount());
    m_profiles.push_back(std::move(profile));
    endInsertRows();
}

void NotchProfileList::remove(int index)
{
    beginRemoveRows({}, index, index);
    m_profiles.erase(m_profiles.begin() + index);
    endRemoveRows();
}

void NotchProfileList::rename(int index, const QString &name)
{
    m_profiles.at(static_cast<std::size_t>(index)).name = name;
    Q_EMIT dataChanged(this->index(index), this->index(index), {NameRole});
}

void NotchProfileList::activate(int index)
{
    m_activeIndex = index;
    Q_EMIT dataChanged(this->index(0), this->index(rowCount() - 1), {IsActiveRole});
}

} // namespace velmora
