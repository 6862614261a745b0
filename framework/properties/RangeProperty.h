// SPDX-License-Identifier: MIT
#pragma once

#include "framework/properties/ValueProperty.h"

#include <limits>
#include <locale>
#include <sstream>
#include <string>

namespace Quillmere::Core {

/// A number that must lie between two limits, both inclusive. The step is for those who show the setting;
/// nothing enforces it.
template <class T>
class QUILLMERE_API RangeProperty : public ValueProperty<T> {
public:
    using ValueProperty<T>::ValueProperty;

    void accept(Util::System::AbstractVisitor& visitor) const override {
        if (!this->acceptTyped(*this, visitor)) DefaultPropertyCatchAll::onUnknownVisitor(*this, visitor);
    }

    /// As `ValueProperty`, then raises `Poco::RangeException` for a value outside the limits, a not-a-number
    /// included.
    void checkNewValue(const T& newValue) override {
        ValueProperty<T>::checkNewValue(newValue);
        if (isWithinLimits(newValue)) return;
        std::ostringstream text;
        text.imbue(std::locale::classic());
        text << newValue << " does not fit in [" << minValue << ";" << maxValue << "], (step : " << stepValue
             << ")";
        throw Poco::RangeException(text.str());
    }

    /// Stores the three, telling no one. A value that lies outside then becomes `min`, through `setValue`.
    /// [setup], or [any] inside a guard of the caller's
    void setRange(T min, T max, T step) {
        minValue = min;
        maxValue = max;
        stepValue = step;
        if (!isWithinLimits(this->value)) this->setValue(minValue);
    }

    // Open to visitors, and to a block that changes one limit inside a guard. Kept as is: the lowest int is
    // minus the highest, not the type's lowest.
    T minValue = -std::numeric_limits<T>::max();
    T maxValue = std::numeric_limits<T>::max();
    T stepValue = T{};

private:
    bool isWithinLimits(const T& candidate) const { return candidate >= minValue && candidate <= maxValue; }
};

extern template class QUILLMERE_API RangeProperty<int>;
extern template class QUILLMERE_API RangeProperty<double>;

} // namespace Quillmere::Core
