#pragma once

// What the fuzz targets share: a walk over a finished tree.

#include "MxXmlLib.h"

namespace MxFuzz
{

// Calls `visit` on every element below and including `root`, in document
// order, the way readers move through a tree. Without recursion: a deep
// input must not exhaust the fuzzer's stack.
template <typename Visit> void WalkTree(MxXmlLib::CXmlElement const *root, Visit visit)
{
    for (MxXmlLib::CXmlElement const *e = root; e;)
    {
        visit(e);
        if (e->GetFirstElement())
            e = e->GetFirstElement();
        else
        {
            while (e && !e->GetNextSiblingElement())
                e = e->GetParentElm();
            if (e)
                e = e->GetNextSiblingElement();
        }
    }
}

} // namespace MxFuzz
