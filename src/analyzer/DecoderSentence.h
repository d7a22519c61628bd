#pragma once

#include <QString>

/// What a decoder or its runtime tells the user, in the user's language; as it is where that has no such sentence.
///
/// Quoted titles and then also numbers stand as %1, %2, ... up to %9 in the text that is looked up, among the
/// decoder's own texts first and then among those that all decoders share. A title is translated as well.
/// @param text  a sentence a line @param analyzer  the name of the decoder
/// Any thread.
[[nodiscard]] QString decoderSentence(const QString &text, const QString &analyzer);
