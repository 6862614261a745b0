// SPDX-License-Identifier: MIT
// A plug-in for the host's tests: blocks with every kind of setting and with every way to go wrong.
#include "framework/Quillmere.h"
#include "plugin/EntryPoints.h"
#include "plugin/FilterFactory.h"

#include <cmath>
#include <memory>
#include <string>

namespace {

using namespace Quillmere::Core;

/// Passes "main in.put" on to "a"; has a setting of every kind.
class OddSettings final : public Filter {
public:
    static constexpr const char* kTypeName = "OddSettings";

    explicit OddSettings(const std::string& name)
        : Filter(name, true), auxiliary("aux", this), main("main in.put", this), a("a", this), b("b", this),
          flag("flag", bag()), whole("whole", bag()), count("count", bag()), number("number", bag()),
          rangedWhole("ranged whole", bag()), rangedNumber("ranged.number", bag()), choice("choice", bag()),
          matrix("matrix", bag()), locked("locked", bag()), unlock("unlock", bag()), command("Reset", bag()) {
        auxiliary.setIsBlocking(false);
        rangedWhole.setRange(-3, 10, 1);
        rangedNumber.setRange(0.5, 1.5, 0.0);
        for (const char* const label : {"LowPass", "HiPass", "0"})
            choice.addLabel(label);
        matrix.setValue(MatrixXd::Constant(1, 2, 0.5));
        matrix.setValidator(this, &OddSettings::checkMatrix);
        locked.setIsWritable(false);
        unlock.setChangeHandler(this, &OddSettings::onUnlock);
    }

    void process() override {
        if (auxiliary.hasData()) auxiliary.take();
        if (!main.hasData()) return;
        copySample(a.data.value, main.take());
        a.send(main.getTimeStamp());
    }
    const char* getTypeName() const override { return kTypeName; }

private:
    PropertyBag* bag() { return &getPropertyBag(); }
    void checkMatrix(const MatrixXd& value) const {
        if (value.size() == 0) throw Poco::DataFormatException("a row at least");
    }
    void onUnlock() { locked.setIsWritable(unlock.getValue()); }

    InputPin<MatrixXd> auxiliary;
    InputPin<MatrixXd> main;
    OutputPin<MatrixXd> a;
    OutputPin<MatrixXd> b;
    ValueProperty<bool> flag;
    ValueProperty<int> whole;
    ValueProperty<unsigned> count;
    ValueProperty<double> number;
    RangeProperty<int> rangedWhole;
    RangeProperty<double> rangedNumber;
    EnumProperty<std::string> choice;
    ValueProperty<MatrixXd> matrix;
    ValueProperty<double> locked;
    ValueProperty<bool> unlock;
    CommandProperty command;
};

/// Passes samples on until it raises at the one after "good", with "strange" what no C++ library knows. Hears
/// of a "good" below 0 with an exception.
class OddFailing final : public Filter {
public:
    static constexpr const char* kTypeName = "OddFailing";

    explicit OddFailing(const std::string& name)
        : Filter(name, true), in("in", this), out("out", this), good("good", &getPropertyBag()),
          strange("strange", &getPropertyBag()) {
        good.setChangeHandler(this, &OddFailing::onGood);
    }

    void process() override {
        if (!in.hasData()) return;
        if (++seen > good.getValue()) {
            if (strange.getValue()) throw 7;
            throw Poco::RuntimeException("overheated");
        }
        copySample(out.data.value, in.take());
        out.send(in.getTimeStamp());
    }
    const char* getTypeName() const override { return kTypeName; }

private:
    void onGood() const {
        if (good.getValue() < 0) throw Poco::RuntimeException("no sample at all");
    }

    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> out;
    ValueProperty<int> good;
    ValueProperty<bool> strange;
    int seen = 0;
};

/// Sends "in" plus what "back" brought last: a leaky sum when its output leads back.
class OddSum final : public Filter {
public:
    static constexpr const char* kTypeName = "OddSum";

    explicit OddSum(const std::string& name)
        : Filter(name, true), back("back", this), in("in", this), out("out", this) {
        back.setIsBlocking(false);
    }

    void process() override {
        if (back.hasData()) held = 0.5 * back.take()(0);
        if (!in.hasData()) return;
        const double value = in.take()(0);
        resizeSample(out.data.value, 1, 1);
        out.data.value(0) = value + held;
        out.send(in.getTimeStamp());
    }
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> back;
    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> out;
    double held = 0.0;
};

/// Counts up by itself, without an input.
class OddGenerator final : public Filter {
public:
    static constexpr const char* kTypeName = "OddGenerator";

    explicit OddGenerator(const std::string& name) : Filter(name, true), out("out", this) {
        resizeSample(out.data.value, 1, 1);
        out.data.value(0) = 0.0;
    }

    void process() override {
        out.data.value(0) += 1.0;
        out.send(0.0);
    }
    const char* getTypeName() const override { return kTypeName; }

private:
    OutputPin<MatrixXd> out;
};

/// Sends each sample three times in one step, a bit higher each time, so that a buffer behind it fills.
class OddThrice final : public Filter {
public:
    static constexpr const char* kTypeName = "OddThrice";

    explicit OddThrice(const std::string& name)
        : Filter(name, true), in("in", this), out("out", this), rise("rise [units]", &getPropertyBag()) {
        rise.setValue(0.25);
        rise.setChangeHandler(this, &OddThrice::onRise);
    }

    void process() override {
        if (!in.hasData()) return;
        copySample(out.data.value, in.take());
        for (int i = 0; i < 3; ++i) {
            out.data.value(0) += rise.getValue();
            out.send(in.getTimeStamp());
        }
    }
    const char* getTypeName() const override { return kTypeName; }

private:
    /// Its words take more than a line.
    void onRise() {
        if (rise.getValue() < kDeepest)
            throw Poco::InvalidArgumentException("found a fall;\nexpected a rise");
    }

    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> out;
    static constexpr double kDeepest = -1e300;
    ValueProperty<double> rise; ///< From each to the next.
};

/// Passes samples on whose first element is their number and whose time stamp is the number in milliseconds,
/// and raises when one comes on either input that isn't behind those before, or whose two ends don't belong
/// together. "Report" shows what has come.
class OddInOrder final : public Filter {
public:
    static constexpr const char* kTypeName = "OddInOrder";

    explicit OddInOrder(const std::string& name)
        : Filter(name, true), side("side", this), in("in", this), out("out", this),
          sideTaken("side taken", bag()), sideLast("side last", bag()), inTaken("in taken", bag()),
          inLast("in last", bag()), report("Report", bag()) {
        side.setIsBlocking(false);
        for (ValueProperty<unsigned>* const shown : {&sideTaken, &sideLast, &inTaken, &inLast})
            shown->setIsWritable(false);
        report.setChangeHandler(this, &OddInOrder::onReport);
    }

    void process() override {
        while (side.hasData())
            take(side, sideSeen);
        if (!in.hasData()) return;
        copySample(out.data.value, take(in, inSeen));
        out.send(in.getTimeStamp());
    }
    const char* getTypeName() const override { return kTypeName; }

private:
    struct Seen {
        unsigned taken = 0;
        unsigned last = 0; ///< Number of the sample that came last.
    };

    PropertyBag* bag() { return &getPropertyBag(); }
    static const MatrixXd& take(InputPin<MatrixXd>& pin, Seen& seen) {
        const MatrixXd& sample = pin.take();
        const auto number = static_cast<unsigned>(sample(0));
        if (number != static_cast<unsigned>(std::lround(1e3 * pin.getTimeStamp())))
            throw Poco::RuntimeException("torn sample on " + pin.getName());
        if (number <= seen.last)
            throw Poco::RuntimeException(std::to_string(number) + " behind " + std::to_string(seen.last) +
                                         " on " + pin.getName());
        ++seen.taken;
        seen.last = number;
        return sample;
    }
    void onReport() {
        show(sideTaken, sideSeen.taken);
        show(sideLast, sideSeen.last);
        show(inTaken, inSeen.taken);
        show(inLast, inSeen.last);
    }
    static void show(ValueProperty<unsigned>& shown, unsigned value) {
        shown.setIsWritable(true);
        shown.setValue(value);
        shown.setIsWritable(false);
    }

    InputPin<MatrixXd> side;
    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> out;
    ValueProperty<unsigned> sideTaken;
    ValueProperty<unsigned> sideLast;
    ValueProperty<unsigned> inTaken;
    ValueProperty<unsigned> inLast;
    CommandProperty report;
    Seen sideSeen;
    Seen inSeen;
};

class OddPlugin final : public DefaultPlugin {
public:
    OddPlugin() : DefaultPlugin("Odd", "0.1") {
        enter<OddSettings>();
        enter<OddFailing>();
        enter<OddSum>();
        enter<OddGenerator>();
        enter<OddThrice>();
        enter<OddInOrder>();
    }

private:
    template <class T>
    void enter() {
        addFactory(std::make_unique<FilterFactory<T>>(getName(), ComponentVersion(getVersion())));
    }
};

OddPlugin* odd = nullptr;

} // namespace

void dllStartPlugin() {
    if (odd != nullptr) return;
    odd = new OddPlugin();
    FlowManager::instance().getPluginManager().installPlugin(*odd);
}

void dllStopPlugin() {
    if (odd == nullptr) return;
    FlowManager::instance().getPluginManager().uninstallPlugin(*odd);
    delete odd;
    odd = nullptr;
}

const char* dllGetQuillmereVersion() {
    return ODD_FRAMEWORK_VERSION;
}
