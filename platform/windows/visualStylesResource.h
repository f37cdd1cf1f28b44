// The number of the manifest among a program's resources; also read by the resource compiler.
#pragma once

#define TESK_VISUAL_STYLES 124
