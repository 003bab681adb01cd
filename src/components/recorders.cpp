// Recorders: logger, type 26 (LG), and water body, type 43 (WB). Connector, type 52 (CN): its copying.
//
//   record[k] = input
//
//   record   series of the component's own id in Logs (LG) or WatBod (WB)
//   k        this step; a second record in the same step overwrites the first
//
// A connector duplicates its input onto both outputs; it does not divide it.

#include <algorithm>

#include "components/model.h"

namespace {

template <Record kind>
struct Recorder {
    Signal* record;

    explicit Recorder(Binder& b) : record(b.recordNow(kind)) {}

    void run(const Block& block, const Ports& ports) const { std::copy_n(ports.in1, block.length, block.now(record)); }
};

template <bool isTwofold>
struct Copy {
    explicit Copy(Binder&) {}

    void run(const Block& block, const Ports& ports) const {
        std::copy_n(ports.in1, block.length, ports.out1);
        if (isTwofold) std::copy_n(ports.in1, block.length, ports.out2);
    }
};

}  // namespace

const Form Lg_Append = kOutputs<Recorder<Record::Logs>, Sets::Nothing>;
const Form Wb_Append = kOutputs<Recorder<Record::WatBod>, Sets::Nothing>;
const Form CopyIn_To_Out = kOutputs<Copy<false>, Sets::Out1>;
const Form CopyIn_To_Outs = kOutputs<Copy<true>, Sets::Both>;
