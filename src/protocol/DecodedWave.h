#pragma once

#include "analyzer/BubbleMaker.h"
#include "wave/DecodedSource.h"

class AnalyzerManager;

/// Shows the waves what the user's analyzers have found so far: it is `gDecodedSource` while it lives.
///
/// It keeps nothing; a worker that runs supplies fewer results, and one that is stopped those that it had. Main thread.
class DecodedWave : public DecodedSource {
public:
    /// @param manager  not owned, outlives this
    /// @param arrived  called when there are texts of bubbles that a visit has told none of, since they took long
    /// @param most  how long a visit waits for texts
    explicit DecodedWave(AnalyzerManager &manager, std::function<void()> arrived = {},
                         std::chrono::milliseconds most = BubbleMaker::patience);
    ~DecodedWave() override;
    DecodedWave(const DecodedWave &) = delete;
    DecodedWave &operator=(const DecodedWave &) = delete;

    void visit(int chn, const std::function<void(const DecodedChannel &)> &visit) const override;
    [[nodiscard]] QString chnLabel(int chn) const override;

private:
    const AnalyzerManager &m_manager;
    mutable BubbleMaker m_maker;
};
