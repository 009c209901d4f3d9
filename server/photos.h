#pragma once

#include "objectinfo.h"

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

namespace vdserver {

inline const QString PHOTO_KEY = QStringLiteral("PT_PHOTO");
inline const QString PHOTO_PREVIEW_KEY = QStringLiteral("PT_PHOTO_PREVIEW");

// Portraits of workers, drawn rather than downloaded: a head and shoulders on a soft background
// with the worker's initials. The same worker always gets the same picture.
class Photos
{
public:
    static QImage portrait(const vorandel::ObjectInfo& worker, const QSize& size);
    // The photo blob, as VDGuiGlobals::imageToDB stores a picture.
    static QByteArray photo(const vorandel::ObjectInfo& worker);
    // The small picture that a worker's record carries as text.
    static QString preview(const vorandel::ObjectInfo& worker);

private:
    Photos() = delete;
};

}  // namespace vdserver
