// What a generator of random models draws, from dice.
#ifndef KESTO_TESTS_RANDOM_CHOICES_H
#define KESTO_TESTS_RANDOM_CHOICES_H

#include <array>
#include <utility>
#include <vector>

#include "random_model.h"

class Choices {
  public:
    Choices(const RandomOptions& options, const Dice& dice)
        : options_(options), dice_(dice), grid_(oneIn(4) ? 8 : 4096) {}

    int between(int low, int high) const { return dice_(low, high + 1); }
    int below(int end) const { return dice_(0, end); }
    bool oneIn(int n) const { return below(n) == n - 1; }
    // For the oddities: in one of so many networks that have any.
    bool oddOneIn(int n) const { return options_.odd && oneIn(n); }

    template <class Element>
    std::size_t index(const std::vector<Element>& elements) const {
        return static_cast<std::size_t>(below(static_cast<int>(elements.size())));
    }
    template <class Element>
    Element& anyOf(std::vector<Element>& elements) const {
        return elements[index(elements)];
    }
    template <class Element>
    void shuffle(std::vector<Element>& elements, std::size_t from) const {
        for (std::size_t i = elements.size(); i > from + 1; --i)
            std::swap(elements[i - 1], elements[from + static_cast<std::size_t>(below(static_cast<int>(i - from)))]);
    }

    // A multiple of 1/8, as they meet one another, or of 1/4096, which has digits to lose.
    float value(int low, int high) const {
        if (options_.value) return options_.value();
        return static_cast<float>(between(low * grid_, high * grid_)) / static_cast<float>(grid_);
    }
    std::vector<float> values(std::size_t count, int low, int high) const {
        const auto drawn = static_cast<std::size_t>(options_.pattern);
        std::vector<float> values(count);
        for (std::size_t k = 0; k < count; ++k)
            values[k] = drawn == 0 || k < drawn ? value(low, high) : values[k - drawn];
        return values;
    }

  private:
    const RandomOptions& options_;
    const Dice& dice_;
    int grid_;
};

#endif
