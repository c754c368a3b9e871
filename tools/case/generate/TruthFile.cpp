#include "generate/TruthFile.h"

#include "generate/PerfectInstrument.h"

namespace generate {

void writeTruth(const Signal& signal, const WaveParameters& wave, base::ResultFile& output)
{
    nlohmann::ordered_json truth;
    if (!signal.mName.empty()) {
        truth["signal"] = signal.mName;
    }
    if (!signal.mText.empty()) {
        truth["text"] = signal.mText;
    }
    truth.update(measuredByPerfectInstrument(wave));
    if (signal.mPst > 0.0) {
        truth["pst"] = signal.mPst;
    }
    constexpr int kIndent = 2;
    output.write(truth.dump(kIndent) + "\n");
}

} // namespace generate
