#include "services/TodoItem.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

namespace velmora
{

namespace
{

using Json = nlohmann::ordered_json;

// Dates are stored as seconds since 2001-01-01 00:00 UTC.
constexpr qint64 referenceDate = 978'307'200'000; // in milliseconds since 1970
constexpr double farthestDate = 1e12;             // in seconds; a QDateTime holds it

double numberOf(const QDateTime &date)
{
    return static_cast<double>(date.toMSecsSinceEpoch() - referenceDate) / 1000;
}

/// Throws for what is no date.
QDateTime dateOf(const Json &value)
{
    const auto seconds = value.get<double>();
    if (!(std::abs(seconds) < farthestDate)) {
        throw std::out_of_range("date");
    }
    return QDateTime::fromMSecsSinceEpoch(std::llround(seconds * 1000) + referenceDate);
}

QString textOf(const Json &value)
{
    return QString::fromStdString(value.get_ref<const std::string &>());
}

/// The value under a key, if there is one.
const Json *optionalAt(const Json &object, const char *key)
{
    const auto found = object.find(key);
    return found == object.end() || found->is_null() ? nullptr : &*found;
}

Json toJson(const TodoItem &item)
{
    Json object;
    object["id"] = item.id.toString(QUuid::WithoutBraces).toUpper().toStdString();
    object["title"] = item.title.toStdString();
    object["isCompleted"] = item.isCompleted;
    if (item.dueDate) {
        object["dueDate"] = numberOf(*item.dueDate);
    }
    if (item.reminderID) {
        object["reminderID"] = item.reminderID->toStdString();
    }
    return object;
}

Json toJson(const TrashedItem &trashed)
{
    Json object;
    object["item"] = toJson(trashed.item);
    object["deletedDate"] = numberOf(trashed.deletedDate);
    return object;
}

void fromJson(const Json &object, TodoItem &item)
{
    item.id = QUuid::fromString(textOf(object.at("id")));
    if (item.id.isNull()) {
        throw std::out_of_range("id");
    }
    item.title = textOf(object.at("title"));
    item.isCompleted = object.at("isCompleted").get<bool>();
    if (const Json *date = optionalAt(object, "dueDate")) {
        item.dueDate = dateOf(*date);
    }
    if (const Json *reminder = optionalAt(object, "reminderID")) {
        item.reminderID = textOf(*reminder);
    }
}

void fromJson(const Json &object, TrashedItem &trashed)
{
    fromJson(object.at("item"), trashed.item);
    trashed.deletedDate = dateOf(object.at("deletedDate"));
}

template<typename Item>
QByteArray encode(const std::vector<Item> &items)
{
    Json array = Json::array();
    for (const Item &item : items) {
        array.push_back(toJson(item));
    }
    return QByteArray::fromStdString(array.dump());
}

template<typename Item>
std::optional<std::vector<Item>> decode(const QByteArray &data)
{
    try {
        const Json array = Json::parse(data.begin(), data.end());
        if (!array.is_array()) {
            return std::nullopt;
        }
        std::vector<Item> items(array.size());
        for (std::size_t i = 0; i < items.size(); ++i) {
            fromJson(array[i], items[i]);
        }
        return items;
    } catch (const Json::exception &) {
    } catch (const std::out_of_range &) {
    }
    return std::nullopt;
}

} // namespace

QByteArray encodeTodoItems(const std::vector<TodoItem> &items)
{
    return encode(items);
}

QByteArray encodeTrashedItems(const std::vector<TrashedItem> &trash)
{
    return encode(trash);
}

std::optional<std::vector<TodoItem>> decodeTodoItems(const QByteArray &data)
{
    return decode<TodoItem>(data);
}

std::optional<std::vector<TrashedItem>> decodeTrashedItems(const QByteArray &data)
{
    return decode<TrashedItem>(data);
}

} // namespace velmora
