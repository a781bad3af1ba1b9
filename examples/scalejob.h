// Scaling on a thread of its own, with progress and cancel. The library decides every pixel.
#ifndef EXAMPLES_SCALEJOB_H
#define EXAMPLES_SCALEJOB_H

#include <ikelex/handle.h>
#include <kelscale.h>

#include <chrono>
#include <future>
#include <vector>

// A picture or a part of one, and the rectangle of the host's window that it is scaled to fill.
struct Piece {
    std::vector<unsigned char> header;  // room for a header block that the image borrows
    KelImagePtr image;
    int nX = 0, nY = 0;  // the job passes them on
    int nWidth = 0, nHeight = 0;
    KelScaleType eKernel = KEL_SCALE_BILINEAR;
};

// The scale filter's kernel of that number.
const tagKelScaleKernel& KernelOf(KelScaleType eType);

// The kernel after that one. The first one follows the last one.
KelScaleType KernelAfter(KelScaleType eType);

// Puts a part of a picture into a piece, at the picture's depth. Full rows are borrowed from the
// picture, which then has to outlive the piece unchanged. Narrower parts are copied.
KelStatus TakePart(IKelImage& picture, int nX, int nY, int nWidth, int nHeight, Piece& piece);

// Scales a piece to 24 bits right away, by sampling its pixels.
KelStatus ScaleQuickly(Piece& piece);

// One job at a time, for the thread that owns the object.
class ScaleJob {
  public:
    ~ScaleJob() { Cancel(); }

    // Cancels what runs, then starts to scale the pieces.
    void Start(std::vector<Piece> pieces);

    // Stops the job before its next row and waits for that. False when none was running.
    bool Cancel();

    // True once for a job that came to its end: the pieces, scaled, and the result.
    bool Finish(std::vector<Piece>& pieces, KelStatus& status);

    // How far the present piece has come, in per cent. -1 without a job and in its first moment.
    int Percent() const;

  private:
    std::vector<Piece> m_Pieces;  // the job's until it ends
    std::future<KelStatus> m_Status;
    std::chrono::steady_clock::time_point m_Shown;  // when progress is worth showing
};

#endif  // EXAMPLES_SCALEJOB_H
