// What moc reads before each file. It fails on some C++20 headers unless a plain standard header comes first; and a
// header that it is given by name alone would be noted as a file beside the build, which is missing, so that every
// build would run moc on everything again.
#include <vector>
