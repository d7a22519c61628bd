#pragma once

#include <QString>

class QPainter;

/// A channel's row as it is being painted, for whoever draws into it.
struct DecodedRow {
    int chn;          ///< digital channel
    int width;        ///< device pixels
    int height;       ///< device pixels
    double viewStart; ///< sample at logical pixel 0
    double ratio;     ///< samples per logical pixel
};

/// "What is decoded on this channel?" The waves ask it; whoever runs decoders implements it.
///
/// All operations are called on the main thread, while a row is painted or built. They must not change the view.
class DecodedSource {
public:
    virtual ~DecodedSource() = default;
    /// Draws what is decoded on the row's channel, over its trace. The painter's origin is the row's top left; its
    /// pen, brush and font may be changed. Cost must follow the row's width, not the number of results.
    virtual void paintRow(QPainter &painter, const DecodedRow &row) const = 0;
    /// The name of the decoder that uses the channel; empty for none.
    [[nodiscard]] virtual QString chnLabel(int chn) const = 0;
};

/// Null while nothing decodes. Not owned; set on the main thread.
extern DecodedSource *gDecodedSource;
