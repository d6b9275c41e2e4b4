#include "Zelvan/ZvNativeCheck.h"
#include "Zelvan/ZvNativeWalk.h"

namespace {

class Collector final : public IZvNativeVisitor {
public:
    Collector(ZvNativeCheck::Result& result, size_t most) : m_result(result), m_most(most) {}

    bool WantsFields() const override { return false; }
    void Field(const ZvNativeStream&, uint64_t, uint64_t, int, const std::string&,
               const std::string&) override {}
    void Problem(const ZvNativeStream& stream, uint64_t at, int, const std::string& where,
                 const std::string& what, const std::string& loss) override {
        if (m_result.findings.size() >= m_most) {
            m_result.truncatedList = true;
            return;
        }
        ZvNativeFinding finding;
        finding.offset = stream.inBlock ? stream.fileOffset : at;
        finding.inner = stream.inBlock ? at : 0;
        finding.where = where;
        finding.what = what;
        finding.loss = loss;
        m_result.findings.push_back(std::move(finding));
    }
    void Entity(bool known) override {
        ++m_result.entities;
        m_result.unknownEntities += !known;
    }
    void Block() override { ++m_result.blocks; }
    void TableRecord() override { ++m_result.records; }
    bool Stopped() const override { return m_result.truncatedList; }

private:
    ZvNativeCheck::Result& m_result;
    size_t m_most;
};

} // namespace

ZvNativeCheck::Result ZvNativeCheck::Run(ZvCore::IFile& file, const Options& options) {
    Result result;
    Collector collector(result, options.maxFindings);
    ZvNativeWalk walk(collector, {options.digests, options.progress});
    const uint64_t position = file.Position();
    walk.Run(file);
    file.Seek(position);
    result.version = walk.Header().version;
    result.isSolid = walk.Header().IsSolid();
    result.hasDigest = walk.Header().HasDigest();
    result.ownEntities = walk.OwnEntities();
    result.cancelled = walk.WasCancelled();
    return result;
}
