#include "model/Model.h"
#include <gtest/gtest.h>
#include <iostream>
using namespace MxXmlLib;
using namespace MxTestModel;
TEST(Scratch, Print)
{
    Register(16, 1);
    char const *docs[][2] = {
        {"order", "<order xmlns='urn:m' id='7'><number>3</number><priority>high</priority><customer><name>Ann</name></customer><payment xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:type='card'><number>42</number></payment></order>"},
    };
    for (auto &d : docs) {
        CSmartPtr<COrder> o(new COrder);
        try { o->FromXml(d[1]); std::cout << o->ToXml(false, false, LF) << "\n"; }
        catch (CMxException const &e) { std::cout << "ERR " << e.GetFullMessage() << "\n"; }
    }
    UnloadModel();
}
