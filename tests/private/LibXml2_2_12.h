#pragma once

// Gives libxml2's structured error function the signature that it has from 2.12 on, whatever
// version is installed: the error is const. For compiling alone; nothing is linked.

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <libxml/xpath.h>

using ConstErrorFunc = void (*)(void* context, const xmlError* error);
extern ConstErrorFunc g_constErrorFunc;
void SetConstErrorFunc(void* context, ConstErrorFunc function);

#undef xmlStructuredError
#define xmlStructuredError g_constErrorFunc
#define xmlStructuredErrorFunc ConstErrorFunc
#define xmlSetStructuredErrorFunc SetConstErrorFunc
