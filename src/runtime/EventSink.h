#pragma once

namespace MxXmlLib
{

class CXmlObjectBase;

// What a watched collection tells its listeners.
class IEventSink
{
public:
    enum MsgType
    {
        MsgCollectionChange = 0,         // data: null
        MsgCollectionAdd = 1,            // data: the item about to be added
        MsgCollectionAddComplete = 2,    // data: the item added
        MsgCollectionRemove = 3,         // data: int * index, null for -1
        MsgCollectionRemoveComplete = 4, // data: int * index, null for -1
    };

    virtual void OnEvent(CXmlObjectBase *source, MsgType type, void *data) = 0;
    virtual CXmlObjectBase *GetBase() = 0;

protected:
    ~IEventSink() = default;
};

} // namespace MxXmlLib
