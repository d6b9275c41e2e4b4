#include "Zelvan/ZvNativeDump.h"
#include "Zelvan/ZvNativeWalk.h"

namespace {

class Teller final : public IZvNativeVisitor {
public:
    Teller(uint64_t maxEntities, const std::function<bool(const ZvNativeDumpItem&)>& sink)
        : m_maxEntities(maxEntities), m_sink(sink) {}

    bool WantsFields() const override { return true; }
    uint64_t MaxEntities() const override { return m_maxEntities; }
    void Field(const ZvNativeStream& stream, uint64_t at, uint64_t length, int depth,
               const std::string& label, const std::string& value) override {
        Give({at, length, depth, stream.number, label, value, false});
    }
    void Problem(const ZvNativeStream& stream, uint64_t at, int depth, const std::string& where,
                 const std::string& what, const std::string& loss) override {
        Give({at, 0, depth, stream.number, where, what + " (loses: " + loss + ")", true});
    }
    bool Stopped() const override { return m_stopped; }

private:
    void Give(const ZvNativeDumpItem& item) {
        if (!m_stopped)
            m_stopped = !m_sink(item);
    }
    uint64_t m_maxEntities;
    const std::function<bool(const ZvNativeDumpItem&)>& m_sink;
    bool m_stopped = false;
};

} // namespace

bool ZvNativeDump::Run(ZvCore::IFile& file, const Options& options,
                       const std::function<bool(const ZvNativeDumpItem&)>& sink) {
    Teller teller(options.maxEntitiesPerList, sink);
    const uint64_t position = file.Position();
    const bool isNative = ZvNativeWalk(teller, {}).Run(file);
    file.Seek(position);
    return isNative;
}
