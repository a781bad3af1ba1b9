/// The examples' painted scene as a picture to measure.
#ifndef SUPPORT_SCENE_H
#define SUPPORT_SCENE_H

#include "examples/paintscene.h"
#include "support/rows.h"

namespace support {

/// A landscape at 24 bits.
inline Rows SceneRows(int nWidth, int nHeight) {
    Rows rows = BlackRows(24, nWidth, nHeight);
    PaintScene(rows.bytes.data(), nWidth, nHeight, static_cast<int>(rows.Stride()));
    return rows;
}

}  // namespace support

#endif  // SUPPORT_SCENE_H
