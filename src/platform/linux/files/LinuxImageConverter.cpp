#include "platform/linux/files/LinuxImageConverter.h"

#include "platform/LocalPath.h"
#include "platform/linux/files/ImageFile.h"

#include <new>
#include <utility>

namespace velmora
{

LinuxImageConverter::LinuxImageConverter()
    : m_worker(1)
{
}

void LinuxImageConverter::convert(const QUrl &source, const ImageEncoding &encoding,
                                  const QUrl &target, NameRule rule, Done done)
{
    m_worker.run(
        [source, encoding, target, rule](const CancelFlag & /*cancelled*/) -> ImageOutcome {
            const auto from = localPath(source);
            const auto to = localPath(target);
            if (!from || !to) {
                return {};
            }
            try {
                QImage image = readImage(*from);
                if (image.isNull()) {
                    return {};
                }
                fitImage(image, encoding.type);
                return writeImage(image, encoding, *to, rule);
            } catch (const std::bad_alloc &) {
                return {};
            }
        },
        std::move(done));
}

} // namespace velmora
