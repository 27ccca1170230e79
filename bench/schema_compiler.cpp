// The schema compiler's run-time back end against the hand-written model of
// the same schema: loading schemas (the example's, a generated one of many
// types, and any given on the command line), then reading and writing a
// purchase order of about 10 MB through both. Prints the ratio of the loaded
// classes' speed to the hand-written classes' speed, measured in one run.
//
//   scripts/bench.sh schema_compiler [extra.xsd...]

#include "BenchSupport.h"
#include "MxXmlLib.h"
#include "dynamic/DynamicSchema.h"
#include "frontend/XsdFrontend.h"
#include "model/PurchaseOrder.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <string>
#include <vector>

using namespace MxXmlLib;

namespace
{
using MxBench::CpuNow;

// Many named types that refer to each other, with facets and enumerations:
// the shape of a large exchange format.
std::string MakeSchema(int types)
{
    std::string xsd = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' xmlns:g='urn:g' "
                      "targetNamespace='urn:g' elementFormDefault='qualified'>"
                      "<xs:simpleType name='Code'><xs:restriction base='xs:token'><xs:enumeration value='A'/>"
                      "<xs:enumeration value='B'/></xs:restriction></xs:simpleType>"
                      "<xs:element name='root' type='g:T0'/>";
    for (int i = 0; i < types; ++i)
    {
        std::string const next = "g:T" + std::to_string((i + 1) % types);
        xsd += "<xs:complexType name='T" + std::to_string(i) + "'><xs:sequence>"
               "<xs:element name='id' type='xs:int'/><xs:element name='name' minOccurs='0'><xs:simpleType>"
               "<xs:restriction base='xs:string'><xs:maxLength value='35'/></xs:restriction></xs:simpleType>"
               "</xs:element><xs:element name='code' type='g:Code' maxOccurs='unbounded'/>"
               "<xs:choice minOccurs='0'><xs:element name='when' type='xs:dateTime'/>"
               "<xs:element name='amount' type='xs:decimal'/></xs:choice>"
               "<xs:element name='next' type='" + next + "' minOccurs='0'/></xs:sequence>"
               "<xs:attribute name='version' type='xs:string'/></xs:complexType>";
    }
    return xsd + "</xs:schema>";
}

double TimeLoad(std::string const &path, int rounds, std::size_t &classes)
{
    double best = 1e9;
    for (int r = 0; r < rounds; ++r)
    {
        double const start = CpuNow();
        MxCompiler::CSchemaSet const set = MxCompiler::CSchemaSet::Load({path});
        best = std::min(best, CpuNow() - start);
        classes = set.GetModel().classes.size();
    }
    return best;
}
} // namespace

int Run(int argc, char **argv);

int main(int argc, char **argv)
{
    try
    {
        return Run(argc, argv);
    }
    catch (MxCompiler::CSchemaError const &e)
    {
        std::fprintf(stderr, "schema: %s\n", e.what());
    }
    catch (CMxException const &e)
    {
        std::fprintf(stderr, "%s\n", e.GetFullMessage().c_str());
    }
    return 1;
}

int Run(int argc, char **argv)
{
    Register(16, 1);
    std::vector<std::string> schemas = {MX_EXAMPLE_DATA_DIR "/purchase-order.xsd"};
    std::string const generated = "/tmp/mx-bench-generated.xsd";
    std::ofstream(generated) << MakeSchema(2000);
    schemas.push_back(generated);
    for (int i = 1; i < argc; ++i)
        schemas.push_back(argv[i]);

    std::printf("%-48s %8s %10s\n", "schema", "classes", "load ms");
    for (std::string const &path : schemas)
    {
        std::size_t classes = 0;
        double const seconds = TimeLoad(path, 3, classes);
        std::string const shown = path.size() > 48 ? "..." + path.substr(path.size() - 45) : path;
        std::printf("%-48s %8zu %10.2f\n", shown.c_str(), classes, seconds * 1e3);
    }

    MxCompiler::CSchemaSet const set = MxCompiler::CSchemaSet::Load({schemas.front()});
    std::string const xml = MxBench::MakePurchaseOrder(10 * 1000 * 1000);
    CBinaryData const bytes(reinterpret_cast<unsigned char *>(const_cast<char *>(xml.data())),
                            static_cast<unsigned long>(xml.size()), false);
    CSerializationContext context;
    context.GetNamespaceAliases().Add("po", Example::kPoNamespace);
    double handRead = 1e9, handWrite = 1e9, loadedRead = 1e9, loadedWrite = 1e9;
    std::string handText, loadedText;
    for (int r = 0; r < 5; ++r)
    {
        CSmartPtr<Example::CPurchaseOrder> order(new Example::CPurchaseOrder);
        double start = CpuNow();
        order->FromXml(xml.c_str(), context);
        handRead = std::min(handRead, CpuNow() - start);
        start = CpuNow();
        handText = order->ToXml(true, true, LF, context);
        handWrite = std::min(handWrite, CpuNow() - start);

        start = CpuNow();
        CSmartPtr<CXmlObjectBase> loaded = set.Read(bytes, context);
        loadedRead = std::min(loadedRead, CpuNow() - start);
        start = CpuNow();
        loadedText = loaded->ToXml(true, true, LF, context);
        loadedWrite = std::min(loadedWrite, CpuNow() - start);
    }
    double const mb = static_cast<double>(xml.size()) / 1e6;
    std::printf("\n%.1f MB purchase order       %10s %10s %16s\n", mb, "hand MB/s", "loaded MB/s", "loaded/hand");
    std::printf("%-28s %10.1f %10.1f %16.2f\n", "read (FromXml)", mb / handRead, mb / loadedRead, handRead / loadedRead);
    std::printf("%-28s %10.1f %10.1f %16.2f\n", "write (ToXml)", mb / handWrite, mb / loadedWrite,
                handWrite / loadedWrite);
    if (handText != loadedText)
        std::printf("note: the two models wrote different documents\n");
    Example::CleanAllMetaData();
    return 0;
}
