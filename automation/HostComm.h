// A communications form that a host brings along: its controls behind the seams of the transport.
#pragma once

#include <memory>

#include "automation/Com.h"
#include "transport/frmComm.h"

namespace tesk::automation {

// The form behind an object that has mscComm and tmrScan; error 13 where it lacks them or a member that the
// transport uses.
std::shared_ptr<frmComm> FormOf(IDispatch* object);

// The host's object behind a form that FormOf made; null for another.
IDispatch* HostFormBehind(const frmComm& form);

}  // namespace tesk::automation
