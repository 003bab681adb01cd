#include "network_view.h"

namespace kesto {

NetworkView::NetworkView(const Model& model) : model_(model), network_(model), carriers_(model, network_) {
    for (int i = 0; i < components(); ++i) {
        inputs_.push_back(network_.inputs(i));
    }
}

std::string_view NetworkView::whyUnread(int index) const {
    const int code = component(index).code;
    if (code == code::kJunction || code == code::kMixer || inputs(index).empty()) return {};
    const int port = connection(inputs(index).front()).toPort;
    if (inputs(index).size() == 1) return port == 1 ? "" : "its only sender uses input 2, which it does not read";
    return port != connection(inputs(index).back()).toPort ? "" : "it reads one of two senders on the same input";
}

}  // namespace kesto
