#include "runtime/MxException.h"

namespace MxXmlLib
{

CMxException::CMxException() : m_inner(nullptr) {}

CMxException::CMxException(std::string const &message) : m_message(message), m_inner(nullptr) {}

CMxException::CMxException(std::string const &message, CMxException const &inner)
    : m_message(message), m_inner(inner.Clone())
{
}

CMxException::CMxException(std::string const &message, std::string const &path)
    : m_message(message), m_inner(nullptr)
{
    if (!path.empty())
    {
        m_message += "\nPath: ";
        m_message += path;
        m_path = path;
    }
}

CMxException::CMxException(std::string const &message, std::string const &path, CMxException const &inner)
    : CMxException(message, path)
{
    m_inner = inner.Clone();
}

CMxException::CMxException(CMxException const &other)
    : m_message(other.m_message), m_path(other.m_path),
      m_inner(other.m_inner ? other.m_inner->Clone() : nullptr)
{
}

CMxException::~CMxException()
{
    delete m_inner;
}

CMxException &CMxException::operator=(CMxException const &other)
{
    // Assignment transfers the text and the cause, not the location: the path
    // stays as it was. The clone is taken first so that self-assignment works.
    CMxException *inner = other.m_inner ? other.m_inner->Clone() : nullptr;
    delete m_inner;
    m_inner = inner;
    m_message = other.m_message;
    return *this;
}

std::string CMxException::GetFullMessage() const
{
    std::string text = m_message;
    for (CMxException const *inner = m_inner; inner; inner = inner->m_inner)
    {
        text += '\n';
        text += inner->m_message;
    }
    return text;
}

CMxException *CMxException::Clone() const
{
    return new CMxException(*this);
}

// ---------------------------------------------------------------------------

CMxValidationException::CMxValidationException() {}

CMxValidationException::CMxValidationException(std::string const &message, std::string const &path)
    : CMxException(message, path)
{
}

CMxValidationException::CMxValidationException(std::string const &message, std::string const &path,
                                               CMxException const &inner)
    : CMxException(message, path, inner)
{
}

CMxValidationException::CMxValidationException(CMxException const &other) : CMxException(other) {}

CMxValidationException::CMxValidationException(CMxValidationException const &other)
    : CMxException(other), m_validationInfo(other.m_validationInfo)
{
}

CMxValidationException &CMxValidationException::operator=(CMxValidationException const &other)
{
    CMxException::operator=(other);
    m_validationInfo = other.m_validationInfo;
    return *this;
}

CMxException *CMxValidationException::Clone() const
{
    return new CMxValidationException(*this);
}

// ---------------------------------------------------------------------------

CMxInvalidValueException::CMxInvalidValueException() {}

CMxInvalidValueException::CMxInvalidValueException(std::string const &message)
    : CMxValidationException(message, std::string())
{
}

CMxInvalidValueException::CMxInvalidValueException(std::string const &message, CMxException const &inner)
    : CMxValidationException(message, std::string(), inner)
{
}

CMxInvalidValueException::CMxInvalidValueException(CMxException const &other) : CMxValidationException(other) {}

CMxInvalidValueException &CMxInvalidValueException::operator=(CMxInvalidValueException const &other)
{
    CMxValidationException::operator=(other);
    return *this;
}

CMxException *CMxInvalidValueException::Clone() const
{
    return new CMxInvalidValueException(*this);
}

// ---------------------------------------------------------------------------

CMxInvalidNamespaceException::CMxInvalidNamespaceException() {}

CMxInvalidNamespaceException::CMxInvalidNamespaceException(std::string const &message, std::string const &path)
    : CMxValidationException(message, path)
{
}

CMxInvalidNamespaceException::CMxInvalidNamespaceException(std::string const &message, std::string const &path,
                                                           CMxException const &inner)
    : CMxValidationException(message, path, inner)
{
}

CMxInvalidNamespaceException::CMxInvalidNamespaceException(CMxException const &other)
    : CMxValidationException(other)
{
}

CMxInvalidNamespaceException &CMxInvalidNamespaceException::operator=(CMxInvalidNamespaceException const &other)
{
    CMxValidationException::operator=(other);
    return *this;
}

CMxException *CMxInvalidNamespaceException::Clone() const
{
    return new CMxInvalidNamespaceException(*this);
}

// ---------------------------------------------------------------------------

#define MX_DEFINE_PLAIN_EXCEPTION(Name)                                                    \
    Name::Name() {}                                                                        \
    Name::Name(std::string const &message) : CMxException(message) {}                      \
    Name::Name(std::string const &message, CMxException const &inner)                      \
        : CMxException(message, inner)                                                     \
    {                                                                                      \
    }                                                                                      \
    Name::Name(CMxException const &other) : CMxException(other) {}                         \
    Name &Name::operator=(Name const &other)                                               \
    {                                                                                      \
        CMxException::operator=(other);                                                    \
        return *this;                                                                      \
    }                                                                                      \
    CMxException *Name::Clone() const { return new Name(*this); }

MX_DEFINE_PLAIN_EXCEPTION(CMxInvalidStateException)
MX_DEFINE_PLAIN_EXCEPTION(CMxInvalidParamException)
MX_DEFINE_PLAIN_EXCEPTION(CMxOverFlowException)

} // namespace MxXmlLib
