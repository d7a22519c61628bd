#pragma once

#include "wave/AChnTAG.h"

/// The flag of the analog trigger's level: as that of a channel's zero level, in the colour of the trigger's channel,
/// with a notch by which it is told from it.
class AChnTiggerTAG : public AChnTAG {
    Q_OBJECT
public:
    explicit AChnTiggerTAG(QWidget *parent);

protected:
    [[nodiscard]] Outline outline(int side) const override;
};
