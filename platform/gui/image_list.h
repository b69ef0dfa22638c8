#pragma once

#include <QPixmap>
#include <QString>
#include <vector>

namespace mirelo::platform {

// The icons of a screen, numbered by their place in the list from 1. A grid cell holds the
// number of its picture, so "does this cell show image 3" is a comparison of numbers, and the
// picture drawn is the list's own pixmap.
class ImageList {
  public:
    ImageList() = default;
    ImageList(std::vector<QPixmap> images) : images_(std::move(images)) {}

    // The pictures named by pathPattern with %1 standing for 1 to count, for example
    // ":/icons/imagelist1_%1.svg". A picture that can't be read fails with run-time error 53.
    static ImageList FromFiles(const QString &pathPattern, int count);

    int Count() const { return static_cast<int>(images_.size()); }
    // Image number index, from 1; any other number fails with the list's "Index out of bounds".
    const QPixmap &ListImage(int index) const;

  private:
    std::vector<QPixmap> images_;
};

} // namespace mirelo::platform
