// What a driver tells the operator, as data: a title and a text in English, which is its own translation key.
#pragma once

#include "base/HostServices.h"

namespace tesk {

struct Message {
  const char* title;
  const char* text;
};

inline void Show(const Message& message) { ShowMessage(message.title, message.text); }

}  // namespace tesk
