// Late-bound calls.
#include "automation/HostCalls.h"

#include <iterator>
#include <span>
#include <vector>

#include "base/RunTimeError.h"

namespace tesk::automation {
namespace {

struct Exception : EXCEPINFO {
  Exception() : EXCEPINFO{} {}
  Exception(const Exception&) = delete;
  Exception& operator=(const Exception&) = delete;
  ~Exception() {
    SysFreeString(bstrSource);
    SysFreeString(bstrDescription);
    SysFreeString(bstrHelpFile);
  }
};

RunTimeError ErrorOf(HRESULT status, Exception& exception) {
  if (status == DISP_E_MEMBERNOTFOUND || status == DISP_E_UNKNOWNNAME) {
    return {kErrorNoSuchMember, "Object doesn't support this property or method"};
  }
  if (status != DISP_E_EXCEPTION) return TypeMismatch();
  if (exception.pfnDeferredFillIn != nullptr) exception.pfnDeferredFillIn(&exception);
  const std::string description = TextOf(exception.bstrDescription);
  // A number of its own, or one in the low half of a status code.
  const std::int32_t number = exception.wCode != 0 ? exception.wCode : exception.scode & 0xFFFF;
  return {number, description.empty() ? "Automation error" : description};
}

// Objects of some script engines know their names through IDispatchEx alone.
bool FindMemberOfScript(IDispatch& object, const wchar_t* name, DISPID& id) {
  ComPtr<IDispatchEx> script;
  if (FAILED(object.QueryInterface(IID_IDispatchEx, &script))) return false;
  BSTR text = SysAllocString(name);
  const HRESULT status = script->GetDispID(text, fdexNameCaseInsensitive, &id);
  SysFreeString(text);
  return SUCCEEDED(status);
}

bool FindMember(IDispatch& object, const wchar_t* name, DISPID& id) {
  auto* writable = const_cast<wchar_t*>(name);
  const HRESULT status = object.GetIDsOfNames(IID_NULL, &writable, 1, LOCALE_USER_DEFAULT, &id);
  return SUCCEEDED(status) || FindMemberOfScript(object, name, id);
}

Variant Invoke(IDispatch& object, const wchar_t* name, WORD flags, std::span<VARIANT> reversed) {
  // The call may release the last reference that the host has.
  const ComPtr<IDispatch> kept(&object);
  Exception exception;
  DISPID id = DISPID_UNKNOWN;
  if (!FindMember(object, name, id)) throw ErrorOf(DISP_E_UNKNOWNNAME, exception);
  const bool put = (flags & DISPATCH_PROPERTYPUT) != 0;
  DISPID named = DISPID_PROPERTYPUT;
  DISPPARAMS parameters = {reversed.data(), put ? &named : nullptr, static_cast<UINT>(reversed.size()),
                           put ? 1U : 0U};
  Variant result;
  const HRESULT status = object.Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                                       put ? nullptr : &result, &exception, nullptr);
  if (FAILED(status)) throw ErrorOf(status, exception);
  return result;
}

}  // namespace

bool HasMember(IDispatch& object, const wchar_t* name) {
  DISPID id = DISPID_UNKNOWN;
  return FindMember(object, name, id);
}

Variant CallMethod(IDispatch& object, const wchar_t* name, std::initializer_list<const VARIANT*> arguments) {
  // Borrowed, in the reverse order of calls.
  std::vector<VARIANT> reversed;
  for (auto at = std::rbegin(arguments); at != std::rend(arguments); ++at) reversed.push_back(**at);
  return Invoke(object, name, DISPATCH_METHOD, reversed);
}

Variant GetProperty(IDispatch& object, const wchar_t* name) {
  return Invoke(object, name, DISPATCH_PROPERTYGET, {});
}

void PutProperty(IDispatch& object, const wchar_t* name, const VARIANT& value) {
  VARIANT borrowed[] = {value};
  Invoke(object, name, DISPATCH_PROPERTYPUT, borrowed);
}

ComPtr<IDispatch> GetObjectProperty(IDispatch& object, const wchar_t* name) {
  const Variant value = Converted(GetProperty(object, name), VT_DISPATCH);
  if (value.pdispVal == nullptr) throw TypeMismatch();
  return value.pdispVal;
}

}  // namespace tesk::automation
