#include "platform/gui/image_list.h"

#include "core/mirelo_error.h"

namespace mirelo::platform {
namespace {

constexpr int IndexOutOfBounds = 35600;

} // namespace

ImageList ImageList::FromFiles(const QString &pathPattern, int count) {
    std::vector<QPixmap> images;
    for (int number = 1; number <= count; ++number) {
        QPixmap image(pathPattern.arg(number));
        if (image.isNull()) {
            runtime::raise(53);
        }
        images.push_back(std::move(image));
    }
    return ImageList(std::move(images));
}

const QPixmap &ImageList::ListImage(int index) const {
    if (index < 1 || index > Count()) {
        throw MireloError(IndexOutOfBounds, "Index out of bounds");
    }
    return images_[index - 1];
}

} // namespace mirelo::platform
