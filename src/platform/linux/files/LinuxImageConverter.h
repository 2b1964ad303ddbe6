#pragma once

#include "platform/ImageConverter.h"
#include "platform/linux/files/FileWorker.h"

namespace velmora
{

/// Converts one image after the other, so that there is never more than one in memory.
class LinuxImageConverter final : public ImageConverter
{
public:
    LinuxImageConverter();

    void convert(const QUrl &source, const ImageEncoding &encoding, const QUrl &target,
                 NameRule rule, Done done) override;

private:
    FileWorker m_worker;
};

} // namespace velmora
