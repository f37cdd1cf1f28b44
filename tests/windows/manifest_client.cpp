// Creates the object that its first word names and calls it; status 0 when that worked.
#include <cstdio>

#include "automation/Com.h"

int wmain(int count, wchar_t** words) {
  if (count != 2 || FAILED(CoInitialize(nullptr))) return 2;
  CLSID id = {};
  tesk::automation::ComPtr<IDispatch> object;
  HRESULT status = CLSIDFromProgID(words[1], &id);
  if (SUCCEEDED(status)) {
    status = CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, &object);
  }
  UINT described = 0;
  if (SUCCEEDED(status)) status = object->GetTypeInfoCount(&described);
  std::printf("%08lX\n", static_cast<unsigned long>(status));
  object.Reset();
  CoUninitialize();
  return SUCCEEDED(status) && described == 1 ? 0 : 1;
}
