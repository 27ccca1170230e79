// The C++ back end: the source generated from the example schema is the
// committed golden, compiles without warnings (the build uses -Werror for
// it), and reads and writes exactly as the hand-written model and the
// classes loaded at run time do.

#include "compiler/CompilerTestSupport.h"

#include "dynamic/DynamicSchema.h"
#include "model/PurchaseOrder.h"
#include "purchase_order.h"

#include <gtest/gtest.h>

#include <string>

using namespace MxXmlLib;
namespace Generated = Example::Generated;

namespace
{

std::string Text(CBinaryData const &data)
{
    return std::string(reinterpret_cast<char const *>(data.GetData()), data.GetLength());
}

TEST(GeneratedCode, MatchesTheGolden)
{
    for (char const *name : {"purchase_order.h", "purchase_order.cpp"})
    {
        SCOPED_TRACE(name);
        MxCompilerTest::ExpectSameText(MxCompilerTest::ReadFile(std::string(MX_TEST_DATA_DIR "/") + name + ".golden"),
                                       MxCompilerTest::ReadFile(std::string(MX_GENERATED_DIR "/") + name));
    }
}

TEST(GeneratedCode, ReadsAndWritesAsTheOtherModels)
{
    Register(16, 1);
    std::string const xml = MxCompilerTest::LargeOrder(30);
    CSmartPtr<CXmlObjectBase> generated = Generated::CreateRoot("purchaseOrder", "urn:example:po");
    ASSERT_FALSE(generated.IsNull());
    generated->FromXml(xml.c_str());
    CSmartPtr<Example::CPurchaseOrder> written(new Example::CPurchaseOrder);
    written->FromXml(xml.c_str());
    MxCompiler::CSchemaSet const set = MxCompiler::CSchemaSet::Load({MX_EXAMPLE_DATA_DIR "/purchase-order.xsd"});
    CBinaryData const bytes(reinterpret_cast<unsigned char *>(const_cast<char *>(xml.data())),
                            static_cast<unsigned long>(xml.size()), false);
    CSmartPtr<CXmlObjectBase> loaded = set.Read(bytes, CSerializationContext::GetDefaultContext());

    MxCompilerTest::ExpectSameText(written->ToXml(), generated->ToXml());
    MxCompilerTest::ExpectSameText(loaded->ToXml(false, false), generated->ToXml(false, false));
    MxCompilerTest::ExpectSameText(written->ToJson(), generated->ToJson());
    MxCompilerTest::ExpectSameText(Text(written->ToFastInfosetStream()), Text(generated->ToFastInfosetStream()));
}

TEST(GeneratedCode, TypedAccessorsBuildADocument)
{
    Register(16, 1);
    CSmartPtr<CXmlObjectBase> root = Generated::CreateRoot("purchaseOrder", "urn:example:po");
    auto *order = dynamic_cast<Generated::CPurchaseOrderType *>(root.Get());
    ASSERT_NE(nullptr, order);
    CDateTime date;
    date.ParseXSDDate("2026-03-04");
    order->SetOrderDate(date);
    order->SetStatus(Generated::OrderStatus::shipped);
    CSmartPtr<Generated::CUSAddress> to = order->GetShipTo();
    to->SetName("Ann");
    to->SetStreet("1 Elm");
    to->SetCity("Oslo");
    to->SetState("NA");
    to->SetZip("12345");
    CSmartPtr<Generated::CItem> item(new Generated::CItem("item"));
    item->SetPartNum("123-AB");
    item->SetProductName("Spade");
    item->SetQuantity(3);
    item->SetUSPrice(CDecimal("9.50"));
    order->GetItems()->AddItem(item);

    EXPECT_EQ("<AA:purchaseOrder xmlns:AA=\"urn:example:po\" orderDate=\"2026-03-04\" status=\"shipped\">"
              "<AA:shipTo country=\"US\"><AA:name>Ann</AA:name><AA:street>1 Elm</AA:street><AA:city>Oslo</AA:city>"
              "<AA:state>NA</AA:state><AA:zip>12345</AA:zip></AA:shipTo><AA:items><AA:item partNum=\"123-AB\">"
              "<AA:productName>Spade</AA:productName><AA:quantity>3</AA:quantity><AA:USPrice>9.5</AA:USPrice>"
              "</AA:item></AA:items></AA:purchaseOrder>",
              root->ToXml(false, false));
    EXPECT_EQ(1, order->GetItems()->GetItemCount());
    EXPECT_EQ(3, order->GetItems()->GetItemAt(0)->GetQuantity());
    EXPECT_FALSE(order->HasComment());
}

} // namespace
