// Lists: copies, look-ups, and what missing memory leaves.
#include "kelparameters/kelparameters.h"

#include <gtest/gtest.h>

#include <string>

#include "support/allocfaults.h"

namespace {

// Long enough that the string's text is an allocation of its own.
const char kLongName[] = "a name that does not fit into the string object itself";

// A caller's list of two names, the first of them twice.
struct List {
    tagKelParameterItem items[3];
    tagKelParameters params{3, items};

    List() {
        items[0] = {"quality", CVamVariant(short{40})};
        items[1] = {kLongName, CVamVariant(2.5)};
        items[2] = {"quality", CVamVariant(90)};
    }
};

TEST(Parameters, CopyOutlivesItsSourceAndFindsTheFirstOfTwoEqualNames) {
    tagKelParameters copy;
    InitParameters(copy);
    {
        List list;
        ASSERT_EQ(1, CopyParameters(&list.params, &copy));
        list.items[0].varValue = CVamVariant(1);
    }
    ASSERT_EQ(3u, copy.nCount);
    EXPECT_EQ(&copy.pItems[0].varValue, GetParameter(copy, "quality"));
    EXPECT_EQ(VAM_INT16, copy.pItems[0].varValue.m_byType);
    EXPECT_EQ(40u, copy.pItems[0].varValue.m_Value);
    EXPECT_EQ(&copy.pItems[1].varValue, GetParameter(copy, kLongName));
    for (const char* pszAbsent :
         {"Quality", "qualit", "quality ", "", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(nullptr, GetParameter(copy, pszAbsent));
    }
    DestroyParameters(copy);
    EXPECT_EQ(0u, copy.nCount);
    EXPECT_EQ(nullptr, GetParameter(copy, "quality"));
}

TEST(Parameters, NullPointersChangeNothingAndEmptyListsCopyAsEmpty) {
    List list;
    tagKelParameters target{7, list.items};
    EXPECT_EQ(0, CopyParameters(nullptr, &target));
    EXPECT_EQ(0, CopyParameters(&list.params, nullptr));
    EXPECT_EQ(7u, target.nCount);
    EXPECT_EQ(list.items, target.pItems);

    for (tagKelParameters source :
         {tagKelParameters{0, list.items}, tagKelParameters{3, nullptr}}) {
        target = {7, list.items};
        EXPECT_EQ(1, CopyParameters(&source, &target));
        EXPECT_EQ(0u, target.nCount);
        EXPECT_EQ(nullptr, target.pItems);
    }
}

TEST(ParameterMgr, EachSetReplacesWhatWasHeldAlsoWhenMemoryFails) {
    CKelParameterMgr manager;
    List list;
    EXPECT_EQ(1, manager.SetParameters(&list.params));
    EXPECT_EQ(1, manager.SetParameters(&manager.m_Params));
    ASSERT_NE(nullptr, manager.GetParameter(kLongName));
    list.items[0].strName = CVamString("width");
    EXPECT_EQ(1, manager.SetParameters(&list.params));
    EXPECT_EQ(VAM_INT32, manager.GetParameter("quality")->m_byType);
    EXPECT_EQ(0, manager.SetParameters(nullptr));
    EXPECT_EQ(nullptr, manager.GetParameter("width"));
    bool bFired = true;
    for (long nFailing = 1; bFired; ++nFailing) {
        {
            support::AllocFaults faults(nFailing);
            EXPECT_EQ(1, manager.SetParameters(&list.params));
            bFired = faults.Fired();
        }
        EXPECT_EQ(bFired ? 0u : 3u, manager.m_Params.nCount) << nFailing;
    }
}

}  // namespace
