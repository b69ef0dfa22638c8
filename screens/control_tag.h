#pragma once

#include <QObject>
#include <QString>
#include <QVariant>

namespace mirelo::screens {

// The tag of a control: a mark the program puts on a control while it changes the control
// itself ("NoClick", "NoChange"), so that the control's own change event knows to do nothing.
inline QString Tag(const QObject *control) {
    return control->property("Tag").toString();
}
inline void setTag(QObject *control, const QString &tag) {
    control->setProperty("Tag", tag);
}

} // namespace mirelo::screens
