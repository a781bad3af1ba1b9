// A painter of a photograph-like scene, for trying things out without a picture at hand.
#ifndef EXAMPLES_PAINTSCENE_H
#define EXAMPLES_PAINTSCENE_H

// Paints a landscape of nWidth x nHeight pixels into pBits: rows from the top, nStride bytes apart,
// each pixel blue, green, red. It has what a photograph has: smooth gradients, soft clouds, fine
// texture, grain, hard edges and lettering. The work is done in integers alone, so the same size
// gives the same bytes everywhere. Bytes between the last pixel of a row and the next row are left
// as they are.
void PaintScene(unsigned char* pBits, int nWidth, int nHeight, int nStride);

#endif  // EXAMPLES_PAINTSCENE_H
