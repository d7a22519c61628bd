#include "wave/MainView.h"

QVector<ShownPair> MainView::shownPairs() const
{
    return {};
}
