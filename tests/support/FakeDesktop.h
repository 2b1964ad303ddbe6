#pragma once

#include "platform/FileDrags.h"
#include "platform/OverlayShell.h"
#include "platform/Pointer.h"

#include <QWindow>

#include <memory>
#include <optional>

namespace velmora
{

/// Says that the pointer is where the test puts it.
class FakePointer final : public Pointer
{
public:
    std::optional<QPointF> position;

    [[nodiscard]] std::optional<QPointF> location() const override { return position; }

    void dragTo(const QPointF &location)
    {
        position = location;
        Q_EMIT movedElsewhere(location);
    }
};

/// Drags files through other programs.
class FakeFileDrags final : public FileDrags
{
public:
    QList<QUrl> known;

    [[nodiscard]] QList<QUrl> files() const override { return known; }

    void begin(const QList<QUrl> &files)
    {
        known = files;
        Q_EMIT began(files);
    }
};

/// Remembers what was asked of the window system last.
class FakeShell final : public OverlayShell
{
public:
    QRegion shape;
    QRect bounds;
    bool isMotionWanted = true;
    bool isKeyboardWanted = false;
    int shown = 0;
    int surfaces = 0; ///< alive

    [[nodiscard]] std::unique_ptr<OverlaySurface> adopt(QWindow &, const Screen &,
                                                        const QRect &initial) override
    {
        bounds = initial;
        return std::make_unique<Surface>(*this);
    }

private:
    class Surface final : public OverlaySurface
    {
    public:
        explicit Surface(FakeShell &shell)
            : m_shell(shell)
        {
            ++m_shell.surfaces;
        }
        Surface(const Surface &) = delete;
        Surface &operator=(const Surface &) = delete;
        ~Surface() override
        {
            --m_shell.surfaces;
            m_shell.isKeyboardWanted = false;
        }

        void orderFront() override { ++m_shell.shown; }
        void setShape(const OverlayShape &shape) override { m_shell.shape = shape(1, true); }
        void setMotionWanted(bool wanted) override { m_shell.isMotionWanted = wanted; }
        void setKeyboardWanted(bool wanted) override { m_shell.isKeyboardWanted = wanted; }

    private:
        FakeShell &m_shell;
    };
};

} // namespace velmora
