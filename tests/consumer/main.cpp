// Reads a note, changes it through its typed accessors, and writes it as XML,
// JSON and Fast Infoset, reading each back: exit status 0 when all agree.
#include "note.h"

#include <cstdio>

int main()
{
    MxXmlLib::Register(16, 1);
    MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> root = notes::CreateRoot("note", "urn:note");
    root->FromXml("<note xmlns='urn:note' priority='2'><to>Ann</to><tag>a</tag><body>Hi</body></note>");
    auto *note = dynamic_cast<notes::Cnote *>(root.Get());
    if (note == nullptr)
        return 1;
    note->SetBody("Hello & goodbye");
    note->SetPriority(note->GetPriority() + 1);
    std::string const xml = root->ToXml(false, false);
    MxXmlLib::CSerializationContext strict;
    strict.GetJsonContext().SetStrict(true);
    MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> fromJson = notes::CreateRoot("note", "urn:note");
    fromJson->FromJson(root->ToJson(true, MxXmlLib::LF, strict).c_str(), strict);
    MxXmlLib::CSmartPtr<MxXmlLib::CXmlObjectBase> fromFi = notes::CreateRoot("note", "urn:note");
    fromFi->FromXmlStream(root->ToFastInfosetStream());
    std::puts(xml.c_str());
    return fromJson->ToXml(false, false) == xml && fromFi->ToXml(false, false) == xml ? 0 : 1;
}
