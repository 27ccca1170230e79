// Arbitrary bytes read into classes of the generated shape: the purchase
// order and the other roots of the test models (tests/model), through the byte entry
// point, which detects compression and Fast Infoset. Whatever the input, the
// read ends in a filled object or a CMxException, and a filled object writes
// itself out again (or fails with a CMxException).

#include "MxXmlLib.h"
#include "model/Model.h"
#include "model/PurchaseOrder.h"

#include <cstdint>
#include <functional>
#include <vector>

using namespace MxXmlLib;

namespace
{
template <typename T> void ReadAndWrite(uint8_t const *data, size_t size, CSerializationContext const &context)
{
    CSmartPtr<T> object(new T);
    try
    {
        object->FromXmlStream(const_cast<uint8_t *>(data), static_cast<unsigned long>(size), context);
    }
    catch (CMxException const &)
    {
        return;
    }
    try
    {
        (void)object->ToXml(false, true, LF, context);
    }
    catch (CMxException const &)
    {
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size)
{
    static bool const registered = (Register(16, 1), true);
    (void)registered;
    if (size < 2)
        return 0;
    // The first byte picks the class and the reading options.
    uint8_t const choice = data[0];
    CSerializationContext context;
    if (choice & 0x10)
        context.SetIgnoreUnknownElements(true);
    else if (choice & 0x20)
        context.SetIgnoreMissingMandatoryElements(true);
    context.SetIgnoreUnknownAttributes((choice & 0x40) != 0);
    context.SetIgnoreMissingChoice((choice & 0x80) != 0);
    std::vector<std::function<void(uint8_t const *, size_t, CSerializationContext const &)>> const readers = {
        ReadAndWrite<Example::CPurchaseOrder>, ReadAndWrite<MxTestModel::COrder>,
        ReadAndWrite<MxTestModel::CPacket>,    ReadAndWrite<MxTestModel::CPicks>,
        ReadAndWrite<MxTestModel::CSettings>,  ReadAndWrite<MxTestModel::CLayout>,
        ReadAndWrite<MxTestModel::CBag>,       ReadAndWrite<MxTestModel::CMemo>,
    };
    readers[choice % readers.size()](data + 1, size - 1, context);
    return 0;
}
