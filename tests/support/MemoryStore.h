#pragma once

#include "platform/KeyValueStore.h"

#include <QStringList>

#include <map>
#include <type_traits>
#include <variant>

namespace velmora
{

/// A defaults store that a test fills and reads by hand.
class MemoryStore final : public KeyValueStore
{
public:
    using Value = std::variant<bool, double, qint64, QString, QByteArray>;

    std::map<QString, Value> values;
    QStringList written; ///< the keys in the order of their writes

    [[nodiscard]] std::optional<bool> boolean(const QString &key) const override
    {
        return as<bool>(key);
    }
    [[nodiscard]] std::optional<double> number(const QString &key) const override
    {
        if (const auto integral = as<qint64>(key)) {
            return static_cast<double>(*integral);
        }
        return as<double>(key);
    }
    [[nodiscard]] qint64 integer(const QString &key) const override
    {
        return as<qint64>(key).value_or(0);
    }
    [[nodiscard]] std::optional<QString> string(const QString &key) const override
    {
        return as<QString>(key);
    }
    [[nodiscard]] std::optional<QByteArray> data(const QString &key) const override
    {
        return as<QByteArray>(key);
    }

    void setBoolean(const QString &key, bool value) override { set(key, value); }
    void setNumber(const QString &key, double value) override { set(key, value); }
    void setInteger(const QString &key, qint64 value) override { set(key, value); }
    void setString(const QString &key, const QString &value) override { set(key, value); }
    void setData(const QString &key, const QByteArray &value) override { set(key, value); }

private:
    template<typename T>
    [[nodiscard]] std::optional<T> as(const QString &key) const
    {
        const auto found = values.find(key);
        if (found == values.end() || !std::holds_alternative<T>(found->second)) {
            return std::nullopt;
        }
        return std::get<T>(found->second);
    }

    template<typename T>
    void set(const QString &key, const T &value)
    {
        written << key;
        values.insert_or_assign(key, Value(std::in_place_type<T>, value));
    }
};

} // namespace velmora
