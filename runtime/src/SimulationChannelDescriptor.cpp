#include "DescriptorPrivate.h"

SimulationChannelDescriptor::SimulationChannelDescriptor() : m_private(new Private) {}

SimulationChannelDescriptor::~SimulationChannelDescriptor()
{
    delete m_private;
}

Channel SimulationChannelDescriptor::GetChannel() const
{
    return m_private->channel;
}

BitState SimulationChannelDescriptor::GetInitialBitState() const
{
    return m_private->initialLevel ? BitState::High : BitState::Low;
}

BitState SimulationChannelDescriptor::GetCurrentBitState() const
{
    return m_private->currentLevel ? BitState::High : BitState::Low;
}

SimulationData *SimulationChannelDescriptor::GetData()
{
    return &m_private->data;
}
