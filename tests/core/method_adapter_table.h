#pragma once

#include <trovek/trovek.h>

#include <QByteArray>
#include <QPointer>
#include <QStringList>

#include <functional>
#include <string>
#include <vector>

namespace trovek {

/** A line that an adapter logs: a text, and the JSON that follows it in styled form. */
struct Complaint
{
    std::string text;
    std::string json;

    std::string line() const;
};

/** What the service may answer, and what becomes of it. */
struct Exchange
{
    std::string what;
    std::string answer;
    /** The signal with its arguments, for example "jobIdReceived(12)". */
    QString emitted;
    std::vector<Complaint> logged = {};
};

/** An adapter of any class; deletes what is left of it. */
class Adapter
{
public:
    template <typename A, typename Request>
    static Adapter make()
    {
        auto* const adapter = new A;
        return Adapter(adapter, static_cast<Request*>(adapter),
                       [adapter](Trovek& client) { adapter->issue(client); });
    }

    ~Adapter() { delete m_object; }
    Adapter(Adapter&& other) = default;

    QObject* object() const { return m_object; }
    /** Where the request's class begins in the object. */
    void* request() const { return m_request; }
    void issue(Trovek& client) const { m_issue(client); }

private:
    Adapter(QObject* object, void* request, std::function<void(Trovek&)> issue)
        : m_object(object)
        , m_request(request)
        , m_issue(std::move(issue))
    {}

    QPointer<QObject> m_object;
    void* m_request;
    std::function<void(Trovek&)> m_issue;
};

/** One class of adapter, and all that is to be known of it. */
struct AdapterKind
{
    std::string method;
    Adapter (*make)();
    QByteArray className;
    /** Declarations of the two signals. */
    QByteArray success;
    QByteArray failure;
    /** What every failure emits but one that was told of "urlopen". */
    QString failed;
    QString failedByInternet;
    std::string logUnit;
    std::vector<Exchange> exchanges;
};

/** Every adapter that the library has. */
const std::vector<AdapterKind>& adapterKinds();

} // namespace trovek
