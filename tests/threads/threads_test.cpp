// Different images on different threads, and one image read by many, which is more than is
// promised.
#include <gtest/gtest.h>
#include <ikelex/handle.h>
#include <platform/vamarchivememory.h>

#include <atomic>
#include <functional>
#include <thread>

#include "kelimage/kelimage.h"
#include "support/pictures.h"

namespace {

constexpr int kThreads = 6, kRounds = 8;

using support::Bytes;

void OnAllThreads(const std::function<void(int)>& work) {
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back(work, i);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

// Works on a picture in every way, saves it, and opens and saves the file again.
Bytes Job(KelImageFormat eFormat) {
    CVamArchiveMemory file, again;
    CKelImage image;
    support::OpenRandom(&image, {24, BI_RGB, 0}, 90, 77, 4);
    image.Mirror(0);
    image.ZoomImage(70, 50);
    image.Rotate(0);
    image.SubImage(1, 2, 45, 60);
    image.ApplyFilter(KEL_FILTER_SCALE, KelParameters().Set("width", 40).Set("type", 4));
    image.Save(&file, eFormat, nullptr);
    file.Seek(0, 0);
    image.Open(&file);
    image.Save(&again, eFormat, nullptr);
    return Bytes(again.GetData(), again.GetData() + again.GetSize());
}

}  // namespace

TEST(Threads, ImagesSideBySide) {
    for (const KelImageFormat eFormat : {KEL_IMAGE_BMP, KEL_IMAGE_JPEG, KEL_IMAGE_PNG}) {
        const Bytes expected = Job(eFormat);
        ASSERT_FALSE(expected.empty());
        std::atomic<int> nWrong = 0;
        OnAllThreads([&](int) {
            for (int i = 0; i < kRounds; ++i) {
                nWrong += Job(eFormat) != expected;
            }
        });
        EXPECT_EQ(0, nWrong) << eFormat;
    }
}

TEST(Threads, OneImageReadByMany) {
    for (const support::Kind& kind : support::AllKinds()) {
        CKelImage image;
        ASSERT_EQ(KEL_OK, support::OpenRandom(&image, kind, 61, 20, 4));
        Bytes expected(184 * 20);
        image.ConvertTo24Bit(1, expected.data());
        std::atomic<int> nWrong = 0;
        OnAllThreads([&](int) {
            Bytes rows(expected.size());
            image.ConvertTo24Bit(1, rows.data());
            nWrong += rows != expected || image.GetBits() != image.GetLineArray()[0] ||
                      image.GetPaletteNum() != image.m_nPaletteNum ||
                      image.GetPalette() != image.m_pPalette;
        });
        EXPECT_EQ(0, nWrong) << support::Name(kind);
    }
}
