// Schema constructs as real schemas use them: each schema binds at run time,
// the document reads, and the XML written back is exactly the expected text
// and valid against the schema for Xerces-C.

#include "compiler/CompilerTestSupport.h"

#include "dynamic/DynamicSchema.h"

#include "MxXmlLib.h"

#include <gtest/gtest.h>

#include <string>

using namespace MxXmlLib;
using MxCompiler::CSchemaSet;

namespace
{

struct ConstructCase
{
    char const *name;
    char const *schema;   // the body of an xs:schema for urn:c, elements qualified
    char const *document; // read, then written back unformatted
    char const *expected; // the written text
};

constexpr ConstructCase kConstructs[] = {
    {"nested groups and repetition",
     "<xs:element name='r'><xs:complexType><xs:sequence>"
     "<xs:choice maxOccurs='unbounded'><xs:element name='a' type='xs:int'/><xs:element name='b' type='xs:string'/>"
     "</xs:choice><xs:sequence minOccurs='0'><xs:element name='c' type='xs:boolean'/>"
     "<xs:element name='d' type='xs:decimal' maxOccurs='3'/></xs:sequence></xs:sequence></xs:complexType></xs:element>",
     "<r xmlns='urn:c'><a>1</a><b>x</b><a>2</a><c>true</c><d>1.5</d><d>2</d></r>",
     "<AA:r xmlns:AA=\"urn:c\"><AA:a>1</AA:a><AA:b>x</AA:b><AA:a>2</AA:a><AA:c>true</AA:c><AA:d>1.5</AA:d>"
     "<AA:d>2</AA:d></AA:r>"},
    {"a repeated group of one element reads as the element repeated",
     "<xs:element name='r'><xs:complexType><xs:sequence><xs:sequence minOccurs='2' maxOccurs='unbounded'>"
     "<xs:element name='e' type='xs:int' maxOccurs='unbounded'/></xs:sequence><xs:choice minOccurs='2' "
     "maxOccurs='2'><xs:element name='f' type='xs:int' minOccurs='0'/></xs:choice></xs:sequence></xs:complexType>"
     "</xs:element>",
     "<r xmlns='urn:c'><e>1</e><e>2</e><f>3</f></r>",
     "<AA:r xmlns:AA=\"urn:c\"><AA:e>1</AA:e><AA:e>2</AA:e><AA:f>3</AA:f></AA:r>"},
    {"all group",
     "<xs:element name='r'><xs:complexType><xs:all><xs:element name='a' type='xs:int'/>"
     "<xs:element name='b' type='xs:string' minOccurs='0'/></xs:all></xs:complexType></xs:element>",
     "<r xmlns='urn:c'><b>x</b><a>1</a></r>", "<AA:r xmlns:AA=\"urn:c\"><AA:a>1</AA:a><AA:b>x</AA:b></AA:r>"},
    {"derivation by extension through xsi:type",
     "<xs:complexType name='Base'><xs:sequence><xs:element name='a' type='xs:int'/></xs:sequence></xs:complexType>"
     "<xs:complexType name='Ext'><xs:complexContent><xs:extension base='c:Base'><xs:sequence>"
     "<xs:element name='b' type='xs:string'/></xs:sequence><xs:attribute name='n' type='xs:int'/></xs:extension>"
     "</xs:complexContent></xs:complexType>"
     "<xs:element name='r'><xs:complexType><xs:sequence><xs:element name='v' type='c:Base' maxOccurs='2'/>"
     "</xs:sequence></xs:complexType></xs:element>",
     "<r xmlns='urn:c' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'><v><a>1</a></v>"
     "<v xsi:type='Ext' n='3'><a>2</a><b>y</b></v></r>",
     "<AA:r xmlns:AA=\"urn:c\"><AA:v><AA:a>1</AA:a></AA:v><AA:v xmlns:AB=\"http://www.w3.org/2001/XMLSchema-instance\" "
     "AB:type=\"AA:Ext\" n=\"3\"><AA:a>2</AA:a><AA:b>y</AA:b></AA:v></AA:r>"},
    {"substitution group",
     "<xs:element name='shape' type='xs:string' abstract='true'/>"
     "<xs:element name='circle' type='xs:string' substitutionGroup='c:shape'/>"
     "<xs:element name='square' type='xs:string' substitutionGroup='c:shape'/>"
     "<xs:element name='r'><xs:complexType><xs:sequence><xs:element ref='c:shape' maxOccurs='unbounded'/>"
     "</xs:sequence></xs:complexType></xs:element>",
     "<r xmlns='urn:c'><square>1</square><circle>2</circle></r>",
     "<AA:r xmlns:AA=\"urn:c\"><AA:square>1</AA:square><AA:circle>2</AA:circle></AA:r>"},
    {"nillable, default and fixed",
     "<xs:element name='r'><xs:complexType><xs:sequence><xs:element name='a' type='xs:int' nillable='true'/>"
     "<xs:element name='b' type='xs:string' default='d' minOccurs='0'/></xs:sequence>"
     "<xs:attribute name='f' type='xs:string' fixed='F'/></xs:complexType></xs:element>",
     "<r xmlns='urn:c' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' f='F'><a xsi:nil='true'/><b>e</b></r>",
     "<AA:r xmlns:AA=\"urn:c\" f=\"F\"><AA:a xmlns:AB=\"http://www.w3.org/2001/XMLSchema-instance\" AB:nil=\"true\"/>"
     "<AA:b>e</AA:b></AA:r>"},
    {"simple content with attributes, enumeration, list and union",
     "<xs:simpleType name='Size'><xs:restriction base='xs:string'><xs:enumeration value='S'/>"
     "<xs:enumeration value='L'/></xs:restriction></xs:simpleType>"
     "<xs:simpleType name='Ints'><xs:list itemType='xs:int'/></xs:simpleType>"
     "<xs:simpleType name='IntOrDate'><xs:union memberTypes='xs:int xs:date'/></xs:simpleType>"
     "<xs:element name='r'><xs:complexType><xs:sequence><xs:element name='p'><xs:complexType><xs:simpleContent>"
     "<xs:extension base='xs:decimal'><xs:attribute name='cur' type='xs:string'/></xs:extension></xs:simpleContent>"
     "</xs:complexType></xs:element><xs:element name='s' type='c:Size' maxOccurs='2'/>"
     "<xs:element name='l' type='c:Ints'/><xs:element name='u' type='c:IntOrDate'/></xs:sequence>"
     "</xs:complexType></xs:element>",
     "<r xmlns='urn:c'><p cur='EUR'>2.50</p><s>L</s><s>S</s><l>1 2  3</l><u>2020-01-01</u></r>",
     "<AA:r xmlns:AA=\"urn:c\"><AA:p cur=\"EUR\">2.5</AA:p><AA:s>L</AA:s><AA:s>S</AA:s><AA:l>1 2 3</AA:l>"
     "<AA:u>2020-01-01</AA:u></AA:r>"},
    {"simple content of a number, a boolean and a date on lines of their own",
     "<xs:complexType name='T'><xs:simpleContent><xs:extension base='xs:boolean'><xs:attribute name='a' "
     "type='xs:int'/></xs:extension></xs:simpleContent></xs:complexType>"
     "<xs:element name='r'><xs:complexType><xs:sequence><xs:element name='b' type='c:T'/><xs:element name='i'>"
     "<xs:complexType><xs:simpleContent><xs:extension base='xs:int'><xs:attribute name='a' type='xs:int'/>"
     "</xs:extension></xs:simpleContent></xs:complexType></xs:element><xs:element name='d'><xs:complexType>"
     "<xs:simpleContent><xs:extension base='xs:date'><xs:attribute name='a' type='xs:int'/></xs:extension>"
     "</xs:simpleContent></xs:complexType></xs:element></xs:sequence></xs:complexType></xs:element>",
     "<r xmlns='urn:c'><b a='1'>\n  true\n</b><i>\n  12\n</i><d a='2'>\t2020-01-01 </d></r>",
     "<AA:r xmlns:AA=\"urn:c\"><AA:b a=\"1\">true</AA:b><AA:i>12</AA:i><AA:d a=\"2\">2020-01-01</AA:d></AA:r>"},
    {"wildcards",
     "<xs:element name='r'><xs:complexType><xs:sequence><xs:element name='a' type='xs:int'/>"
     "<xs:any namespace='##other' processContents='lax' minOccurs='0' maxOccurs='unbounded'/></xs:sequence>"
     "<xs:anyAttribute namespace='##other' processContents='skip'/></xs:complexType></xs:element>",
     "<r xmlns='urn:c' xmlns:o='urn:o' o:x='1'><a>1</a><o:e k='v'>t</o:e><o:f/></r>",
     "<AA:r xmlns:AA=\"urn:c\" xmlns:AB=\"urn:o\" AB:x=\"1\"><AA:a>1</AA:a><AB:e k=\"v\">t</AB:e><AB:f/></AA:r>"},
    {"a strict wildcard binds the elements the set declares",
     "<xs:element name='n' type='xs:int'/><xs:element name='r'><xs:complexType><xs:sequence>"
     "<xs:any namespace='##targetNamespace' maxOccurs='2'/><xs:any namespace='##other' processContents='lax' "
     "minOccurs='0'/></xs:sequence></xs:complexType></xs:element>",
     "<r xmlns='urn:c'><n> 7 </n><r><n>8</n></r><o:x xmlns:o='urn:o'> 9 </o:x></r>",
     "<AA:r xmlns:AA=\"urn:c\"><AA:n>7</AA:n><AA:r><AA:n>8</AA:n></AA:r><AB:x xmlns:AB=\"urn:o\"> 9 </AB:x></AA:r>"},
    {"mixed content kept untyped",
     "<xs:element name='r'><xs:complexType><xs:sequence><xs:element name='m'><xs:complexType mixed='true'>"
     "<xs:sequence><xs:element name='b' type='xs:string'/></xs:sequence></xs:complexType></xs:element>"
     "</xs:sequence></xs:complexType></xs:element>",
     "<r xmlns='urn:c'><m>x<b>y</b></m></r>", "<AA:r xmlns:AA=\"urn:c\"><AA:m><AA:b>y</AA:b>x</AA:m></AA:r>"},
    {"facets counted and matched as XSD says",
     "<xs:simpleType name='Two'><xs:restriction base='xs:negativeInteger'><xs:totalDigits value='2'/>"
     "</xs:restriction></xs:simpleType><xs:simpleType name='Code'><xs:restriction base='xs:string'>"
     "<xs:pattern value='\\d+'/></xs:restriction></xs:simpleType><xs:simpleType name='Short'>"
     "<xs:restriction base='c:Code'><xs:pattern value='.{2}'/></xs:restriction></xs:simpleType>"
     "<xs:element name='r'><xs:complexType><xs:sequence><xs:element name='n' type='c:Two'/>"
     "<xs:element name='b'><xs:simpleType><xs:restriction base='xs:byte'><xs:totalDigits value='3'/>"
     "</xs:restriction></xs:simpleType></xs:element><xs:element name='s' type='c:Short'/>"
     "<xs:element name='t'><xs:simpleType><xs:restriction base='xs:string'><xs:pattern value='^[\\i-[:]].$'/>"
     "</xs:restriction></xs:simpleType></xs:element></xs:sequence></xs:complexType></xs:element>",
     "<r xmlns='urn:c'><n>-99</n><b>-128</b><s>\u0661\u0662</s><t>^a.$</t></r>",
     "<AA:r xmlns:AA=\"urn:c\"><AA:n>-99</AA:n><AA:b>-128</AA:b><AA:s>\u0661\u0662</AA:s><AA:t>^a.$</AA:t></AA:r>"},
    {"recursive type and element reference",
     "<xs:element name='node' type='c:Node'/><xs:complexType name='Node'><xs:sequence>"
     "<xs:element ref='c:node' minOccurs='0' maxOccurs='unbounded'/></xs:sequence>"
     "<xs:attribute name='id' type='xs:ID' use='required'/></xs:complexType>",
     "<node xmlns='urn:c' id='a'><node id='b'><node id='c'/></node><node id='d'/></node>",
     "<AA:node xmlns:AA=\"urn:c\" id=\"a\"><AA:node id=\"b\"><AA:node id=\"c\"/></AA:node><AA:node id=\"d\"/>"
     "</AA:node>"},
    {"an empty element has its default or fixed value, whatever type xsi:type picks",
     "<xs:simpleType name='F'><xs:restriction base='xs:float'/></xs:simpleType><xs:simpleType name='G'>"
     "<xs:restriction base='c:F'><xs:pattern value='1\\.0E-2'/></xs:restriction></xs:simpleType>"
     "<xs:element name='r'><xs:complexType><xs:sequence><xs:element name='e' type='c:F' fixed='1.0E-2' "
     "maxOccurs='2'/><xs:element name='d' type='xs:decimal' default='12' nillable='true'/></xs:sequence>"
     "</xs:complexType></xs:element>",
     "<r xmlns='urn:c' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'><e xsi:type='G'/><e>0.01</e><d/></r>",
     "<AA:r xmlns:AA=\"urn:c\"><AA:e xmlns:AB=\"http://www.w3.org/2001/XMLSchema-instance\" AB:type=\"AA:G\">"
     "1.0E-2</AA:e><AA:e>0.01</AA:e><AA:d>12</AA:d></AA:r>"},
    {"a document element that nothing declares names its complex type",
     "<xs:complexType name='T'><xs:sequence><xs:element name='a' type='xs:int'/></xs:sequence></xs:complexType>"
     "<xs:element name='r' type='xs:int'/>",
     "<x xmlns='urn:c' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:type='\n T '><a>1</a></x>",
     "<AA:x xmlns:AA=\"urn:c\" xmlns:AB=\"http://www.w3.org/2001/XMLSchema-instance\" AB:type=\"AA:T\">"
     "<AA:a>1</AA:a></AA:x>"},
    {"a document element that nothing declares names a simple type of a set of types",
     "<xs:simpleType name='S'><xs:restriction base='xs:string'><xs:pattern value='1|2'/></xs:restriction>"
     "</xs:simpleType>",
     "<x xmlns='urn:c' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:type='S'>2</x>",
     "<AA:x xmlns:AA=\"urn:c\" xmlns:AB=\"http://www.w3.org/2001/XMLSchema-instance\" AB:type=\"AA:S\">2</AA:x>"},
    {"a document element of a built-in type takes a type derived from it",
     "<xs:simpleType name='B'><xs:restriction base='xs:boolean'><xs:pattern value='true|1'/></xs:restriction>"
     "</xs:simpleType><xs:element name='r' type='xs:boolean'/>",
     "<r xmlns='urn:c' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:type='B'> 1 </r>",
     "<AA:r xmlns:AA=\"urn:c\" xmlns:AB=\"http://www.w3.org/2001/XMLSchema-instance\" AB:type=\"AA:B\">1</AA:r>"},
    {"an untyped document element keeps the prefix of its xsi:type",
     "<xs:element name='r'/><xs:complexType name='T'/>",
     "<c:r xmlns:c='urn:c' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:type='c:T'/>",
     "<AA:r xmlns:AA=\"urn:c\" xmlns:c=\"urn:c\" xmlns:AB=\"http://www.w3.org/2001/XMLSchema-instance\" "
     "AB:type=\"c:T\"/>"},
    {"QName values in a repeated choice and a repeated element keep their prefixes",
     "<xs:element name='r'><xs:complexType><xs:sequence><xs:choice maxOccurs='unbounded'>"
     "<xs:element name='k' type='xs:QName'/><xs:element name='f' type='xs:QName'/></xs:choice>"
     "<xs:element name='l' type='xs:QName' maxOccurs='2'/></xs:sequence></xs:complexType></xs:element>",
     "<r xmlns='urn:c' xmlns:p='urn:p' xmlns:q='urn:p' xmlns:s='urn:s'><k> p:a </k><f>q:a</f><l>s:b</l><l>p:c</l>"
     "</r>",
     "<AA:r xmlns:AA=\"urn:c\" xmlns:p=\"urn:p\" xmlns:q=\"urn:p\" xmlns:s=\"urn:s\"><AA:k>p:a</AA:k><AA:f>q:a</AA:f>"
     "<AA:l>s:b</AA:l><AA:l>p:c</AA:l></AA:r>"},
};

std::string Schema(char const *body)
{
    return std::string("<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' xmlns:c='urn:c' "
                       "targetNamespace='urn:c' elementFormDefault='qualified'>") +
           body + "</xs:schema>";
}

TEST(SchemaConstructs, ReadAndWriteBackValid)
{
    Register(16, 1);
    int n = 0;
    for (ConstructCase const &c : kConstructs)
    {
        SCOPED_TRACE(c.name);
        std::string const path = MxCompilerTest::WriteTemp("construct" + std::to_string(n++) + ".xsd", Schema(c.schema));
        try
        {
            CSchemaSet const set = CSchemaSet::Load({path});
            std::string const document = c.document;
            CBinaryData bytes(reinterpret_cast<unsigned char *>(const_cast<char *>(document.data())),
                              static_cast<unsigned long>(document.size()), false);
            CSerializationContext context;
            std::string const written = set.Read(bytes, context)->ToXml(false, false, LF, context);
            EXPECT_EQ(c.expected, written);
            EXPECT_EQ("", MxCompilerTest::XercesValidate({path}, written));
        }
        catch (CMxException const &e)
        {
            ADD_FAILURE() << e.GetFullMessage();
        }
        catch (std::exception const &e)
        {
            ADD_FAILURE() << e.what();
        }
    }
}

} // namespace
