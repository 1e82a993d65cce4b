// COM for the length of one request: the documents of a request are COM objects
// on a platform whose DOM is COM, and each request cleans up after itself.
#pragma once

namespace wrap {

// Throws exc::com_exc_t "Cannot initialize COM runtime"; a platform without COM does nothing.
class CRequestComScope {
public:
    CRequestComScope();
    ~CRequestComScope();
    CRequestComScope(const CRequestComScope&) = delete;
    CRequestComScope& operator=(const CRequestComScope&) = delete;
};

} // namespace wrap
