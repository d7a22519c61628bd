#include "acquisition/SmpHost.h"

SmpHost::SmpHost(QObject *parent) : QObject(parent) {}

SmpHost::~SmpHost() = default;
