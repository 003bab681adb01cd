#include "simulation/turns.h"

#include "components/type_codes.h"
#include "errors.h"
#include "simulation/junctions.h"

namespace {

// All inputs of a junction or mixer, sender by sender.
Signal sumOfInputs(const Run& run, std::size_t position) {
    Signal sum{};
    for (std::size_t c = run.connections.columnStart[position]; c < run.connections.columnStart[position + 1]; ++c)
        addInput(sum, run.signals[c]);
    return sum;
}

// False when a look-up failed.
bool bindAndRun(const Form& form, Step& step, std::size_t position, BoundNetwork& network) {
    network.notes.task = taskOf(position, form.part);
    Binder binder(step, network.notes);
    const Bound bound = form.bind(binder);
    if (binder.failed()) return false;
    bound.run(bound.form, binder.thisStep(), {&step.in1, &step.in2, &step.out1, &step.out2});
    network.tasks[network.notes.task] = bound;
    return true;
}

void runForms(const ComponentType& type, Step& step, std::size_t position, BoundNetwork& network) {
    network.components[position].type = &type;
    network.notes.handedOver.reset();
    for (const Form* const form : type.forms) {
        // DELIBERATE: outputs are computed even when booking potentials has failed, so that their message stands and
        // the state that they write stays written.
        if (form && !bindAndRun(*form, step, position, network) && form->part == Part::Outputs) return;
    }
}

std::int32_t takeTurn(Run& run, Step& step, std::size_t position, BoundNetwork& network) {
    AUEglobals* const Globals = step.Globals;
    network.components[position].row = step.row;
    const std::int32_t code = nint(step.row->techid);
    if (code == code::kJunction || code == code::kMixer) {
        const Signal sum = sumOfInputs(run, position);
        step.out1 = code == code::kJunction ? junction(sum) : mixer(sum);
        return KESTO_SUCCESS;
    }
    const std::int32_t inputs = GetFromCrossSignal(run.signals, run.connections, position, step.in1, step.in2);
    if (inputs < 0) {
        report(Globals, text::kInputCount, step.id, inputs);
        return KESTO_RUN_FAILURE;
    }
    const ComponentType* const type = findType(code);
    if (!type) {
        report(Globals, text::kUnrecognized, step.id);
        return KESTO_RUN_FAILURE;
    }
    if (type->inputs != kAnyInputs && type->inputs != inputs) {
        report(Globals, text::kWrongInputs, type->tag, step.id);
        return KESTO_RUN_FAILURE;
    }
    runForms(*type, step, position, network);
    return Globals->ErrFlag == 1 ? KESTO_RUN_FAILURE : KESTO_SUCCESS;
}

}  // namespace

std::int32_t takeTurns(Run& run, Step& step, BoundNetwork& network) {
    const std::vector<std::int32_t>& CompntId = run.instInfo.CompntId;
    for (std::size_t i = 0; i < CompntId.size(); ++i) {
        step.out1.quantity = -1.0F;
        step.out2.quantity = -1.0F;
        step.id = CompntId[i];
        step.row = run.lookups->findRow(step.id);
        if (!step.row) return KESTO_RUN_FAILURE;
        if (const std::int32_t status = takeTurn(run, step, i, network); status != KESTO_SUCCESS) return status;
        PutInCrossSignal(run.signals, run.connections, i, step.out1, step.out2);
        network.left[i] = {step.in1, step.in2, step.out1, step.out2};
    }
    return KESTO_SUCCESS;
}
