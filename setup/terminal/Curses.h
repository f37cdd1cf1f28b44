// The terminal library as functions: its macros would rename functions of ours.
#pragma once

#ifndef NCURSES_NOMACROS
#define NCURSES_NOMACROS
#endif
#include <form.h>
#include <ncurses.h>
