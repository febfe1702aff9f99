#pragma once
// FDF_PortEI: how the connection view asks the main panel to connect or disconnect, so that the
// panel keeps its own display right. The main panel implements it; Config_Port finds it as the
// view that opened it.

namespace zol {

class FDF_PortEI {
public:
    virtual ~FDF_PortEI() = default;
    virtual void Seize() = 0;
    virtual void Release() = 0;
};

} // namespace zol
