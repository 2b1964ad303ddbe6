#pragma once

#include <QAbstractNativeEventFilter>

#include <cstdint>
#include <functional>

namespace velmora
{

/// Tells when the outputs of the X server change. Qt has a signal for most of that, yet when the
/// last output goes off it makes its screen into a stand-in without a word.
class RandrWatch final : public QAbstractNativeEventFilter
{
public:
    /// `notice` runs before Qt has handled the change.
    explicit RandrWatch(std::function<void()> notice);
    ~RandrWatch() override;
    Q_DISABLE_COPY_MOVE(RandrWatch)

    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;

private:
    std::uint8_t m_firstEvent = 0; ///< 0 without the extension
    std::uint32_t m_root = 0;
    std::function<void()> m_notice;
};

} // namespace velmora
