#include <gtest/gtest.h>
#include <ikelex/ikelex.h>

#include <set>
#include <string>

#include "support/allocfaults.h"

namespace {

TEST(Factory, AnswersNullWithoutMemory) {
    const auto before = support::CountLiveBlocks();
    int nStorage = 0;
    IKelImage* pImage = reinterpret_cast<IKelImage*>(&nStorage);
    {
        const support::AllocFaults faults(1);
        CreateImageObject(&pImage);
    }
    EXPECT_EQ(nullptr, pImage);
    DestroyImageObject(pImage);
    CreateImageObject(&pImage);
    ASSERT_NE(nullptr, pImage);
    DestroyImageObject(pImage);
    EXPECT_EQ(before, support::CountLiveBlocks());
}

TEST(Result, EachCodeHasANameAndAMeaningOfItsOwn) {
    const std::pair<KelResult, const char*> kCodes[] = {{0, "KEL_OK"},
                                                        {1, "KEL_ERR_FAIL"},
                                                        {2, "KEL_ERR_SAVE_FORMAT"},
                                                        {3, "KEL_ERR_OPEN_FORMAT"},
                                                        {4, "KEL_ERR_FILTER_TYPE"},
                                                        {5, "KEL_ERR_PARAM"},
                                                        {6, "KEL_ERR_MEMORY"},
                                                        {8, "KEL_ERR_FILE"},
                                                        {11, "KEL_ERR_CODEC"},
                                                        {1000, "KEL_ERR_NOT_IMPLEMENTED"}};
    std::set<std::string> meanings;
    for (const auto& [nCode, pszName] : kCodes) {
        EXPECT_STREQ(pszName, KelResultName(nCode));
        meanings.insert(KelResultMeaning(nCode));
    }
    for (const KelResult nOther : {-1, 7, 9, 10, 12, 999, 1001}) {
        EXPECT_STREQ(KelResultName(-1), KelResultName(nOther));
        meanings.insert(KelResultMeaning(nOther));
    }
    EXPECT_EQ(11u, meanings.size());
}

}  // namespace
