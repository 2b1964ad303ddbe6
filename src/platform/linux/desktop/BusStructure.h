#pragma once

#include <QDBusArgument>

#include <tuple>

namespace velmora
{

/// What travels as a structure of its members, which it tells in their order.
template<typename T>
concept BusStructure = requires(T &value)
{
    T::members(value);
};

template<BusStructure T>
QDBusArgument &operator<<(QDBusArgument &argument, const T &value)
{
    argument.beginStructure();
    std::apply([&argument](const auto &...member) { (argument << ... << member); },
               T::members(value));
    argument.endStructure();
    return argument;
}

template<BusStructure T>
const QDBusArgument &operator>>(const QDBusArgument &argument, T &value)
{
    argument.beginStructure();
    std::apply([&argument](auto &...member) { (argument >> ... >> member); }, T::members(value));
    argument.endStructure();
    return argument;
}

} // namespace velmora
