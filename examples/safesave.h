// Saving a picture so that an older file of that name is never lost to a half-written new one.
// The image decides the bytes that are written.
#ifndef EXAMPLES_SAFESAVE_H
#define EXAMPLES_SAFESAVE_H

#include <ikelex/handle.h>

#include <string>

// The format a file name's ending stands for; KEL_IMAGE_UNKNOWN when it is none that can be
// written.
KelImageFormat FormatOfName(const std::string& strName);

// Writes the picture to a new file beside strPath, asks that file whether everything reached the
// medium, and only then renames it to strPath. On any failure an older strPath is as it was and
// nothing new is left behind. A strPath that exists and is no regular file (a device, a pipe) is
// written to directly. KEL_ERR_FILE when the target cannot be written, also when the disk is full;
// otherwise the result of Save.
KelStatus SafeSave(IKelImage& image, const std::string& strPath, KelImageFormat eFormat,
                   tagKelParameters* pParams);

#endif  // EXAMPLES_SAFESAVE_H
