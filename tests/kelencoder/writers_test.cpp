// What the writers of every format have in common.
#include <gtest/gtest.h>

#include "kelbitmap/bmplayout.h"
#include "kelimage/kelimage.h"
#include "support/allocfaults.h"
#include "support/faultyarchive.h"
#include "support/inspect.h"
#include "support/recordingtrace.h"
#include "support/securefaults.h"

namespace {

constexpr KelImageFormat kWritten[] = {KEL_IMAGE_BMP, KEL_IMAGE_JPEG, KEL_IMAGE_PNG};

}  // namespace

// Whatever fresh memory holds, even when the host's memset_s fails.
TEST(Writers, RowsThatCannotBeConvertedAreBlack) {
    for (const KelImageFormat eFormat : kWritten) {
        CVamArchiveMemory archive;
        {
            CKelImage image;
            image.Create(21, 12, 16);
            image.m_bmih.biCompression = BI_RLE8;
            const support::AllocFill fill(0xA5);
            const support::RecordingTrace silence(-1);
            const support::SecureFaults idle(1, true);
            EXPECT_EQ(KEL_OK, image.Save(&archive, eFormat, nullptr));
        }
        if (eFormat == KEL_IMAGE_BMP) {
            EXPECT_EQ(0u, kel::Load32(archive.GetData() + 6));  // two fields that nothing is put in
        }
        archive.Seek(0, 0);
        CKelImage image;
        EXPECT_EQ(KEL_OK, image.Open(&archive));
        EXPECT_TRUE(support::Shows(image, support::BlackRows(24, 21, 12))) << eFormat;
    }
}

TEST(Writers, WithoutRowsNothingIsWritten) {
    for (const KelImageFormat eFormat : kWritten) {
        for (const int nBits : {8, 24}) {
            CKelImage image;
            image.Create(20, 12, nBits);
            image.DeleteLineArray();
            support::FaultyArchive archive;
            EXPECT_EQ(KEL_ERR_MEMORY, image.Save(&archive, eFormat, nullptr));
            EXPECT_EQ(0, archive.Calls(support::Op::kWrite) + archive.Calls(support::Op::kSeek));
        }
    }
}
