#pragma once

#include <QString>

#include "map/places/place.h"
#include "map/settings.h"

namespace corvane::map {

struct PictureCopy {
  QString path;
  QString error;  // empty on success
};

// Copies a picture of a place file into the folder, under a name made of the place, the facet and
// the content. Fails if the image's header shows too many pixels or cannot be read, or the copy
// cannot be written. Deletes the facet's earlier copies but `used`. Works on any thread.
PictureCopy CopyPicture(const PlacePicture& picture, const PlaceKey& place, const QString& folder,
                        const QString& used);

}  // namespace corvane::map
