#pragma once
#include "ZvCore/IOErrorSet.h"
#include <functional>
#include <string>
#include <vector>

class GDALDriver;
class OGRSpatialReference;
struct ZvCoordSystem;

/// Messages of the library while one operation runs go to the operation's error set instead of the terminal. Repeated texts are
/// counted. Not to be nested on one thread.
class ZvGdalMessages {
public:
    explicit ZvGdalMessages(IOErrorSet& errors);
    ~ZvGdalMessages();
    ZvGdalMessages(const ZvGdalMessages&) = delete;
    ZvGdalMessages& operator=(const ZvGdalMessages&) = delete;
    /// Text of the latest failure, empty when there was none.
    const std::string& LastFailure() const { return m_lastFailure; }
    void Take(int severity, int number, const char* text);
    /// Put before the texts of failures until it is set anew; asked only when there is one.
    void SetSubject(std::function<std::string()> subject) { m_subject = std::move(subject); }

private:
    IOErrorSet& m_errors;
    std::function<std::string()> m_subject;
    std::string m_lastFailure;
};

/// Registers the library's drivers once.
void ZvGdalInit();

/// Between the drawing's record of a coordinate system and the library's. `kind` None gives an empty reference.
ZvCoordSystem ZvGdalDescribe(const OGRSpatialReference* reference);
bool ZvGdalMakeReference(const ZvCoordSystem& system, OGRSpatialReference& reference);
