// Fault loops every reader passes.
#ifndef SUPPORT_CODECFAULTS_H
#define SUPPORT_CODECFAULTS_H

#include <gtest/gtest.h>

#include "kelimage/kelimage.h"
#include "support/allocfaults.h"
#include "support/faultyarchive.h"
#include "support/recordingtrace.h"

namespace support {

template <typename Decoder>
KelResult Decode(const std::vector<unsigned char>& file, CKelImage& image) {
    CVamArchiveMemory archive(file.data(), file.size());
    return Decoder().Do(&archive, &image);
}

// All a picture shows: header, palette, rows with their padding.
inline std::vector<unsigned char> Snapshot(CKelImage& image) {
    std::vector<unsigned char> all;
    const auto Append = [&all](const void* p, std::size_t nSize) {
        const auto* pBytes = static_cast<const unsigned char*>(p);
        all.insert(all.end(), pBytes, pBytes + nSize);
    };
    Append(image.GetBitmapInfoHeader(), sizeof(BITMAPINFOHEADER));
    Append(image.GetPalette(), static_cast<std::size_t>(image.GetPaletteNum()) * 4);
    const auto nRows = static_cast<unsigned int>(image.GetHeight());
    for (unsigned int i = 0; image.GetLineArray() && i < nRows; ++i) {
        Append(image.GetLineArray()[i], image.GetBmpDataSize() / nRows);
    }
    return all;
}

// The n-th allocation fails, once or for ever: KEL_ERR_MEMORY and an empty image each time.
template <typename Decoder>
void ExpectMemoryErrors(const std::vector<unsigned char>& file) {
    for (const bool bForEver : {false, true}) {
        bool bFired = true;
        for (long n = 1; bFired; ++n) {
            const LiveBlocks before = CountLiveBlocks();
            {
                RecordingTrace trace(-1);
                CKelImage image;
                AllocFaults faults(n, bForEver);
                const KelResult nResult = Decode<Decoder>(file, image);
                bFired = faults.Fired();
                EXPECT_EQ(bFired ? KEL_ERR_MEMORY : KEL_OK, nResult) << n;
                EXPECT_EQ(bFired, image.GetBits() == nullptr) << n;
            }
            EXPECT_EQ(before, CountLiveBlocks()) << n;
        }
    }
}

// Each call of the archive fails in each way: what the archive throws passes through, any other
// fault gives one of the codes, and what fresh memory held never shows.
template <typename Decoder>
void ExpectArchiveFaults(const std::vector<unsigned char>& file) {
    for (const Op eOp : {Op::kRead, Op::kSeek, Op::kGetPosition}) {
        for (const Fault eFault : kAllFaults) {
            bool bFired = true;
            for (int n = 1; bFired; ++n) {
                const LiveBlocks before = CountLiveBlocks();
                {
                    RecordingTrace trace(-1);
                    CKelImage images[2];
                    KelResult results[2] = {-1, -1};
                    for (int i = 0; i < 2; ++i) {
                        const AllocFill fill(i == 0 ? 0xA5 : 0x5A);
                        FaultyArchive archive(file);
                        archive.FailAt(eOp, n, eFault);
                        try {
                            results[i] = Decoder().Do(&archive, &images[i]);
                        } catch (const ForeignError&) {
                        }
                        bFired = archive.Fired();
                    }
                    EXPECT_EQ(bFired && eFault == Fault::kThrow, results[0] == -1) << n;
                    EXPECT_EQ(results[0], results[1]) << n;
                    EXPECT_EQ(Snapshot(images[0]), Snapshot(images[1])) << n;
                }
                EXPECT_EQ(before, CountLiveBlocks()) << n;
            }
        }
    }
}

}  // namespace support

#endif  // SUPPORT_CODECFAULTS_H
