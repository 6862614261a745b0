// SPDX-License-Identifier: MIT
#include "everyday/Unframe.h"

#include <algorithm>

Unframe::Unframe(const std::string& instanceName)
    : Filter(instanceName, true), in("in", this), out("out", this), rate("Rate", &getPropertyBag()),
      hop("Hop", &getPropertyBag()), resetCommand("Reset", &getPropertyBag()) {
    rate.setRange(0.0, 1e9, 1.0);
    rate.setValue(0.0);
    hop.setRange(0, 10000000, 1);
    hop.setValue(0);
    rate.setChangeHandler(this, &Unframe::startAnew);
    resetCommand.setChangeHandler(this, &Unframe::startAnew);
}

Unframe::~Unframe() = default;

void Unframe::process() {
    if (!in.hasData()) return;
    const MatrixXd& frame = in.take();
    if (frame.size() == 0) return;
    take(frame, in.getTimeStamp());
}

void Unframe::take(const MatrixXd& frame, double time) {
    const double perSecond = rate.getValue();
    const Eigen::Index wanted = hop.getValue();
    const Eigen::Index rows = frame.rows();
    const Eigen::Index apart = wanted == 0 ? rows : wanted; // from frame to frame
    const Eigen::Index newRows = std::min(apart, rows);
    if (isNew || frame.rows() != kept.rows() || frame.cols() != kept.cols()) {
        copySample(kept, frame);
        keptTime = time;
        isFirst = perSecond == 0.0;
        isNew = false;
        if (!isFirst) sendRows(frame, rows, time, 1.0 / perSecond);
        return;
    }
    const double step = perSecond > 0.0 ? 1.0 / perSecond : (time - keptTime) / static_cast<double>(apart);
    if (isFirst) sendRows(kept, rows, keptTime, step);
    isFirst = false;
    keptTime = time;
    sendRows(frame, newRows, time, step);
}

void Unframe::sendRows(const MatrixXd& frame, Eigen::Index newRows, double time, double step) {
    resizeSample(out.data.value, 1, frame.cols());
    for (Eigen::Index row = frame.rows() - newRows; row < frame.rows(); ++row) {
        std::copy_n(frame.data() + row * frame.cols(), frame.cols(), out.data.value.data());
        out.send(time - static_cast<double>(frame.rows() - 1 - row) * step);
    }
}
