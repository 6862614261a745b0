// SPDX-License-Identifier: MIT
#include "framework/transport/BufferStrategies.h"

namespace Quillmere::Core {

template class AbstractBufferStrategy<Sample>;
template class SimpleBufferStrategy<Sample, SingleValuePtrBuffer>;
template class SimpleBufferStrategy<Sample, LifoBuffer>;
template class SimpleBufferStrategy<Sample, FifoBuffer>;
template class ThreadSafeBufferStrategy<Sample, SingleValueBuffer>;
template class ThreadSafeBufferStrategy<Sample, LifoBuffer>;
template class ThreadSafeBufferStrategy<Sample, FifoBuffer>;
template class SynchronizedBufferStrategy<Sample, SingleValueBuffer>;
template class SynchronizedBufferStrategy<Sample, LifoBuffer>;
template class SynchronizedBufferStrategy<Sample, FifoBuffer>;

} // namespace Quillmere::Core
