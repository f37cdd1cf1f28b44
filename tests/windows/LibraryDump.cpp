// Walks through a type library.
#include "tests/windows/LibraryDump.h"

#include <vector>

#include "automation/Values.h"
#include "base/conversions.h"
#include "platform/windows/Text.h"

namespace tesk::test {
namespace {

using automation::ComPtr;

std::string Number(long value) { return NumberText(static_cast<std::int32_t>(value)); }

std::string GuidText(REFGUID guid) {
  wchar_t text[40] = {};
  StringFromGUID2(guid, text, 40);
  return platform::WideToUtf8(text);
}

std::string TakeText(BSTR text) {
  const std::string result = automation::TextOf(text);
  SysFreeString(text);
  return result;
}

std::string NameOf(ITypeInfo* info, MEMBERID id) {
  BSTR name = nullptr;
  info->GetDocumentation(id, &name, nullptr, nullptr, nullptr);
  return TakeText(name);
}

std::string HelpOf(ITypeInfo* info, MEMBERID id) {
  BSTR help = nullptr;
  info->GetDocumentation(id, nullptr, &help, nullptr, nullptr);
  return "\"" + TakeText(help) + "\"";
}

const char* PlainTypeName(VARTYPE type) {
  switch (type) {
    case VT_I2:
      return "short";
    case VT_I4:
      return "long";
    case VT_R4:
      return "float";
    case VT_BSTR:
      return "BSTR";
    case VT_BOOL:
      return "VARIANT_BOOL";
    case VT_VARIANT:
      return "VARIANT";
    case VT_DISPATCH:
      return "IDispatch*";
    case VT_UNKNOWN:
      return "IUnknown*";
    case VT_HRESULT:
      return "HRESULT";
    case VT_VOID:
      return "void";
    default:
      return "?";
  }
}

std::string TypeName(ITypeInfo* info, const TYPEDESC& type) {
  if (type.vt == VT_PTR) return TypeName(info, *type.lptdesc) + "*";
  if (type.vt == VT_SAFEARRAY) return "SAFEARRAY(" + TypeName(info, *type.lptdesc) + ")";
  if (type.vt != VT_USERDEFINED) return PlainTypeName(type.vt);
  ComPtr<ITypeInfo> user;
  info->GetRefTypeInfo(type.hreftype, &user);
  return NameOf(user.Get(), MEMBERID_NIL);
}

std::string ParameterFlags(const PARAMDESC& description) {
  std::string text;
  if ((description.wParamFlags & PARAMFLAG_FIN) != 0) text += "in ";
  if ((description.wParamFlags & PARAMFLAG_FOUT) != 0) text += "out ";
  if ((description.wParamFlags & PARAMFLAG_FRETVAL) != 0) text += "retval ";
  if ((description.wParamFlags & PARAMFLAG_FOPT) != 0) text += "optional ";
  if ((description.wParamFlags & PARAMFLAG_FHASDEFAULT) != 0) {
    text += "= " + automation::TextOf(description.pparamdescex->varDefaultValue) + " ";
  }
  return text;
}

const char* KindOf(INVOKEKIND kind) {
  switch (kind) {
    case INVOKE_PROPERTYGET:
      return "get";
    case INVOKE_PROPERTYPUT:
      return "put";
    case INVOKE_PROPERTYPUTREF:
      return "putref";
    default:
      return "call";
  }
}

std::string FunctionText(ITypeInfo* info, const FUNCDESC& function) {
  std::vector<BSTR> names(static_cast<std::size_t>(function.cParams) + 1, nullptr);
  UINT count = 0;
  info->GetNames(function.memid, names.data(), static_cast<UINT>(names.size()), &count);
  std::string text = "  " + Number(function.oVft) + " " + Number(function.memid) + " " +
                     KindOf(function.invkind) + " " + TypeName(info, function.elemdescFunc.tdesc) + " " +
                     TakeText(names[0]) + "(";
  for (SHORT i = 0; i < function.cParams; ++i) {
    const ELEMDESC& parameter = function.lprgelemdescParam[i];
    const std::string name = TakeText(names[static_cast<std::size_t>(i) + 1]);
    text += (i > 0 ? ", " : "") + ParameterFlags(parameter.paramdesc) + TypeName(info, parameter.tdesc);
    if (!name.empty()) text += " " + name;
  }
  text += ")";
  if (function.wFuncFlags != 0) text += " flags " + Number(function.wFuncFlags);
  return text + " " + HelpOf(info, function.memid) + "\n";
}

std::string FunctionsText(ITypeInfo* info, const TYPEATTR& attributes) {
  std::string text;
  for (UINT i = 0; i < attributes.cFuncs; ++i) {
    FUNCDESC* function = nullptr;
    if (FAILED(info->GetFuncDesc(i, &function))) return text + "  unreadable\n";
    text += FunctionText(info, *function);
    info->ReleaseFuncDesc(function);
  }
  return text;
}

std::string VariablesText(ITypeInfo* info, const TYPEATTR& attributes) {
  std::string text;
  for (UINT i = 0; i < attributes.cVars; ++i) {
    VARDESC* variable = nullptr;
    if (FAILED(info->GetVarDesc(i, &variable))) return text + "  unreadable\n";
    text += "  " + NameOf(info, variable->memid) + " = " + automation::TextOf(*variable->lpvarValue) + "\n";
    info->ReleaseVarDesc(variable);
  }
  return text;
}

std::string ImplementedText(ITypeInfo* info, const TYPEATTR& attributes) {
  std::string text;
  for (UINT i = 0; i < attributes.cImplTypes; ++i) {
    HREFTYPE reference = 0;
    INT flags = 0;
    ComPtr<ITypeInfo> implemented;
    info->GetRefTypeOfImplType(i, &reference);
    info->GetImplTypeFlags(i, &flags);
    info->GetRefTypeInfo(reference, &implemented);
    text += "  is " + NameOf(implemented.Get(), MEMBERID_NIL) + " flags " + Number(flags) + "\n";
  }
  return text;
}

const char* KindOf(TYPEKIND kind) {
  switch (kind) {
    case TKIND_ENUM:
      return "enum";
    case TKIND_INTERFACE:
      return "interface";
    case TKIND_DISPATCH:
      return "dispinterface";
    case TKIND_COCLASS:
      return "coclass";
    default:
      return "other";
  }
}

// A dual interface is shown as its table of functions.
ComPtr<ITypeInfo> TableView(ComPtr<ITypeInfo> info) {
  HREFTYPE reference = 0;
  ComPtr<ITypeInfo> table;
  if (FAILED(info->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference))) return info;
  return SUCCEEDED(info->GetRefTypeInfo(reference, &table)) ? table : info;
}

std::string TypeText(ITypeInfo* info) {
  TYPEATTR* attributes = nullptr;
  if (FAILED(info->GetTypeAttr(&attributes))) return "unreadable\n";
  std::string text = std::string(KindOf(attributes->typekind)) + " " + NameOf(info, MEMBERID_NIL) + " " +
                     GuidText(attributes->guid) + " flags " + Number(attributes->wTypeFlags) + " " +
                     HelpOf(info, MEMBERID_NIL) + "\n";
  text += VariablesText(info, *attributes) + FunctionsText(info, *attributes) +
          ImplementedText(info, *attributes);
  info->ReleaseTypeAttr(attributes);
  return text;
}

}  // namespace

std::string DumpOf(ITypeLib* library) {
  BSTR name = nullptr;
  BSTR help = nullptr;
  TLIBATTR* attributes = nullptr;
  library->GetDocumentation(-1, &name, &help, nullptr, nullptr);
  if (FAILED(library->GetLibAttr(&attributes))) return "unreadable\n";
  std::string text = "library " + TakeText(name) + " " + GuidText(attributes->guid) + " " +
                     Number(attributes->wMajorVerNum) + "." + Number(attributes->wMinorVerNum) + " \"" +
                     TakeText(help) + "\"\n";
  library->ReleaseTLibAttr(attributes);
  for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
    ComPtr<ITypeInfo> info;
    if (FAILED(library->GetTypeInfo(i, &info))) return text + "unreadable\n";
    text += "\n" + TypeText(TableView(info).Get());
  }
  return text;
}

}  // namespace tesk::test
