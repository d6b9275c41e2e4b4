#include "Zelvan/DrawingAux/ZvAuxTimer.h"

bool ZvAuxTimer::Poll(double now) {
    if (m_calling || (now - m_last) * 1000.0 < double(m_periodMs))
        return false;
    m_last = now;
    ++m_ticks;
    m_calling = true;
    m_callback(*this);
    m_calling = false;
    return true;
}
