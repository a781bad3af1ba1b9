// Saving a picture so that an older file of that name is never lost to a half-written new one.
#ifndef EXAMPLES_SAFESAVE_H
#define EXAMPLES_SAFESAVE_H

#include <ikelex/ikelex.h>

#include <memory>
#include <string>

// An image that ends with its owner.
struct ImageEnd {
    void operator()(IKelImage* pImage) const { DestroyImageObject(pImage); }
};
using ImagePtr = std::unique_ptr<IKelImage, ImageEnd>;

// A new empty image, or null when memory runs out.
ImagePtr NewImage();

// The format a file name's ending stands for; KEL_IMAGE_UNKNOWN when it is none that can be
// written.
KelImageFormat FormatOfName(const std::string& strName);

// Writes the picture to a new file beside strPath, asks that file whether everything reached the
// medium, and only then renames it to strPath. On any failure an older strPath is as it was and
// nothing new is left behind. A strPath that exists and is no regular file (a device, a pipe) is
// written to directly. KEL_ERR_FILE when the target cannot be written, also when the disk is full;
// otherwise the result of Save.
KelResult SafeSave(IKelImage& image, const std::string& strPath, KelImageFormat eFormat,
                   tagKelParameters* pParams);

#endif  // EXAMPLES_SAFESAVE_H
