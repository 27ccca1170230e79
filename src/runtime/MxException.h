#pragma once

#include <string>

namespace MxXmlLib
{

// Every failure of the library is one of these, thrown by value and caught by
// reference. A path, when known, is appended to the message as "\nPath: ...";
// an inner exception is an owned clone of the cause, so it outlives the throw
// that produced it and keeps its class.
class CMxException
{
public:
    CMxException();
    explicit CMxException(std::string const &message);
    CMxException(std::string const &message, CMxException const &inner);
    CMxException(std::string const &message, std::string const &path);
    CMxException(std::string const &message, std::string const &path, CMxException const &inner);
    CMxException(CMxException const &other);
    virtual ~CMxException();

    // Copies the message and a clone of the inner exception; the path stays.
    CMxException &operator=(CMxException const &other);

    std::string GetMessage() const { return m_message; }
    std::string GetPath() const { return m_path; }
    // The message, then each inner exception's full message, one per line.
    std::string GetFullMessage() const;
    CMxException const *GetInnerException() const { return m_inner; }

protected:
    virtual CMxException *Clone() const;
    static CMxException *CloneOf(CMxException const &e) { return e.Clone(); }

private:
    std::string m_message;
    std::string m_path;
    CMxException *m_inner;
};

class CMxValidationException : public CMxException
{
public:
    CMxValidationException();
    CMxValidationException(std::string const &message, std::string const &path);
    CMxValidationException(std::string const &message, std::string const &path, CMxException const &inner);
    CMxValidationException(CMxException const &other);
    CMxValidationException(CMxValidationException const &other);
    CMxValidationException &operator=(CMxValidationException const &other);

protected:
    CMxException *Clone() const override;

private:
    std::string m_validationInfo;
};

class CMxInvalidValueException : public CMxValidationException
{
public:
    CMxInvalidValueException();
    explicit CMxInvalidValueException(std::string const &message);
    CMxInvalidValueException(std::string const &message, CMxException const &inner);
    CMxInvalidValueException(CMxException const &other);
    CMxInvalidValueException(CMxInvalidValueException const &other) = default;
    CMxInvalidValueException &operator=(CMxInvalidValueException const &other);

protected:
    CMxException *Clone() const override;
};

class CMxInvalidNamespaceException : public CMxValidationException
{
public:
    CMxInvalidNamespaceException();
    CMxInvalidNamespaceException(std::string const &message, std::string const &path);
    CMxInvalidNamespaceException(std::string const &message, std::string const &path, CMxException const &inner);
    CMxInvalidNamespaceException(CMxException const &other);
    CMxInvalidNamespaceException(CMxInvalidNamespaceException const &other) = default;
    CMxInvalidNamespaceException &operator=(CMxInvalidNamespaceException const &other);

protected:
    CMxException *Clone() const override;
};

// The three plain failure kinds share their constructors.
#define MX_DECLARE_PLAIN_EXCEPTION(Name)                                      \
    class Name : public CMxException                                          \
    {                                                                         \
    public:                                                                   \
        Name();                                                               \
        explicit Name(std::string const &message);                            \
        Name(std::string const &message, CMxException const &inner);          \
        Name(CMxException const &other);                                      \
        Name(Name const &other) = default;                                    \
        Name &operator=(Name const &other);                                   \
                                                                              \
    protected:                                                                \
        CMxException *Clone() const override;                                 \
    };

MX_DECLARE_PLAIN_EXCEPTION(CMxInvalidStateException)
MX_DECLARE_PLAIN_EXCEPTION(CMxInvalidParamException)
MX_DECLARE_PLAIN_EXCEPTION(CMxOverFlowException)

#undef MX_DECLARE_PLAIN_EXCEPTION

} // namespace MxXmlLib
