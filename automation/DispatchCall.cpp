// Brings the arguments of a late-bound call into the form in which the system's dispatcher takes them.
#include "automation/DispatchCall.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "automation/Module.h"
#include "automation/Values.h"
#include "base/HostServices.h"
#include "base/RunTimeError.h"

namespace tesk::automation {
namespace {

// One member as the type library describes it.
class Member {
 public:
  Member() = default;
  Member(const Member&) = delete;
  Member& operator=(const Member&) = delete;
  ~Member() { Reset(); }

  // The member that `flags` ask for. An object property is set by reference whichever way a host sets it,
  // and some script hosts read a property as if they called a method.
  bool Find(ITypeInfo* info, DISPID id, WORD flags) {
    info_ = info;
    if (FindKind(id, flags)) return true;
    if ((flags & DISPATCH_PROPERTYPUT) != 0) return FindKind(id, DISPATCH_PROPERTYPUTREF);
    return (flags & DISPATCH_METHOD) != 0 && FindKind(id, DISPATCH_PROPERTYGET);
  }

  const FUNCDESC& operator*() const { return *desc_; }
  const FUNCDESC* operator->() const { return desc_; }

 private:
  bool FindKind(DISPID id, WORD flags) {
    for (UINT i = 0; SUCCEEDED(info_->GetFuncDesc(i, &desc_)); ++i) {
      if (desc_->memid == id && (desc_->invkind & flags) != 0) return true;
      Reset();
    }
    desc_ = nullptr;
    return false;
  }
  void Reset() {
    if (desc_ != nullptr) info_->ReleaseFuncDesc(desc_);
    desc_ = nullptr;
  }

  ComPtr<ITypeInfo> info_;
  FUNCDESC* desc_ = nullptr;
};

// The variant type that values of a described type, or what it points to, travel as.
VARTYPE VariantTypeOf(ITypeInfo* info, const TYPEDESC& type) {
  if (type.vt == VT_PTR) return VariantTypeOf(info, *type.lptdesc);
  if (type.vt == VT_SAFEARRAY) return static_cast<VARTYPE>(VT_ARRAY | VariantTypeOf(info, *type.lptdesc));
  if (type.vt != VT_USERDEFINED) return type.vt;
  ComPtr<ITypeInfo> user;
  TYPEATTR* attributes = nullptr;
  if (FAILED(info->GetRefTypeInfo(type.hreftype, &user)) || FAILED(user->GetTypeAttr(&attributes))) {
    return VT_EMPTY;
  }
  const bool isEnumeration = attributes->typekind == TKIND_ENUM;
  user->ReleaseTypeAttr(attributes);
  return isEnumeration ? VT_I4 : VT_DISPATCH;
}

void Tell(UINT* wrong, UINT at) {
  if (wrong != nullptr) *wrong = at;
}

class Arguments {
 public:
  Arguments(ITypeInfo* info, const FUNCDESC& member)
      : info_(info),
        member_(member),
        count_(static_cast<std::size_t>(member.cParams)),
        given_(count_, nullptr),
        givenAt_(count_, 0),
        held_(count_),
        passed_(count_) {}

  // Brings the arguments into the order of the parameters: those that are named last, so that it is the name
  // that is wrong where a place is taken.
  HRESULT Order(const DISPPARAMS& given, UINT* wrong) {
    if (given.cNamedArgs > given.cArgs || given.cArgs > count_) return DISP_E_BADPARAMCOUNT;
    if (given.cArgs > 0 && given.rgvarg == nullptr) return E_INVALIDARG;
    if (given.cNamedArgs > 0 && given.rgdispidNamedArgs == nullptr) return E_INVALIDARG;
    for (UINT at = given.cArgs; at-- > 0;) {
      const std::size_t place =
          at < given.cNamedArgs ? PlaceNamed(given.rgdispidNamedArgs[at]) : given.cArgs - 1 - at;
      if (place >= count_ || given_[place] != nullptr) {
        Tell(wrong, at);
        return DISP_E_PARAMNOTFOUND;
      }
      given_[place] = &given.rgvarg[at];
      givenAt_[place] = at;
    }
    return S_OK;
  }

  HRESULT Prepare(UINT* wrong) {
    return ForEach(wrong, [this](std::size_t place) { return PrepareOne(place); });
  }

  HRESULT Call(IDispatch* object, VARIANT* result, EXCEPINFO* exception, UINT* wrong) {
    std::reverse(passed_.begin(), passed_.end());
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS parameters = {passed_.data(), IsPut() ? &put : nullptr, static_cast<UINT>(count_),
                             IsPut() ? 1U : 0U};
    UINT at = 0;
    const HRESULT status = DispInvoke(object, info_, member_.memid, static_cast<WORD>(member_.invkind),
                                      &parameters, IsPut() ? nullptr : result, exception, &at);
    if (FAILED(status) && at < count_) Tell(wrong, givenAt_[count_ - 1 - at]);
    // An object of another class, in the words that hosts know.
    return status == E_NOINTERFACE ? DISP_E_TYPEMISMATCH : status;
  }

  // Hands the results of a method back to variables of other types than the parameters are.
  HRESULT WriteBack(UINT* wrong) {
    if (member_.invkind != INVOKE_FUNC) return S_OK;
    return ForEach(wrong, [this](std::size_t place) {
      const VARIANT* variable = given_[place];
      const bool copied = variable != nullptr && held_[place].vt != VT_EMPTY;
      if (copied && IsReference(place) && (variable->vt & VT_BYREF) != 0) Store(*variable, held_[place]);
      return S_OK;
    });
  }

 private:
  // Stops at the first argument that `body` refuses, and tells which it is.
  template <class Body>
  HRESULT ForEach(UINT* wrong, Body&& body) {
    for (std::size_t place = 0; place < count_; ++place) {
      HRESULT status = S_OK;
      if (const auto error = Attempt([&] { status = body(place); })) status = DISP_E_TYPEMISMATCH;
      if (SUCCEEDED(status)) continue;
      Tell(wrong, givenAt_[place]);
      return status;
    }
    return S_OK;
  }

  bool IsPut() const { return (member_.invkind & (INVOKE_PROPERTYPUT | INVOKE_PROPERTYPUTREF)) != 0; }

  // Beyond the last place for a name that is none.
  std::size_t PlaceNamed(DISPID name) const {
    if (name == DISPID_PROPERTYPUT) return IsPut() ? count_ - 1 : count_;
    return name >= 0 ? static_cast<std::size_t>(name) : count_;
  }

  const ELEMDESC& Parameter(std::size_t place) const { return member_.lprgelemdescParam[place]; }

  bool IsReference(std::size_t place) const {
    return (Parameter(place).paramdesc.wParamFlags & PARAMFLAG_FOUT) != 0;
  }

  HRESULT PrepareOne(std::size_t place) {
    const bool missing = given_[place] == nullptr || LeftOut(*given_[place]);
    const USHORT flags = Parameter(place).paramdesc.wParamFlags;
    if (missing && (flags & PARAMFLAG_FOPT) == 0) return DISP_E_PARAMNOTOPTIONAL;
    if (IsReference(place)) return PrepareReference(place, missing);
    held_[place] = missing ? Default(place) : Dereferenced(*given_[place]);
    if (VariantTypeOf(info_, Parameter(place).tdesc) == VT_DISPATCH) TakeNothing(held_[place]);
    passed_[place] = held_[place];
    return S_OK;
  }

  // A variable of the described type: the host's own where it is one, else a copy.
  HRESULT PrepareReference(std::size_t place, bool missing) {
    const TYPEDESC& pointer = Parameter(place).tdesc;
    if (pointer.vt != VT_PTR) return DISP_E_TYPEMISMATCH;
    const VARTYPE target = VariantTypeOf(info_, *pointer.lptdesc);
    const auto reference = static_cast<VARTYPE>(VT_BYREF | target);
    if (!missing && EndOf(*given_[place]).vt == reference) {
      passed_[place] = EndOf(*given_[place]);
      return S_OK;
    }
    held_[place] = missing ? Default(place) : Dereferenced(*given_[place]);
    if (target == VT_DISPATCH) TakeNothing(held_[place]);
    if ((target & VT_ARRAY) != 0) {
      TakeArray(held_[place]);
    } else {
      held_[place] = Converted(held_[place], target);
    }
    passed_[place].vt = reference;
    passed_[place].byref = &held_[place].byref;
    return S_OK;
  }

  Variant Default(std::size_t place) const {
    Variant value;
    const PARAMDESC& description = Parameter(place).paramdesc;
    if ((description.wParamFlags & PARAMFLAG_FHASDEFAULT) != 0) {
      if (FAILED(VariantCopy(&value, &description.pparamdescex->varDefaultValue))) throw TypeMismatch();
    } else {
      value.vt = VT_ERROR;
      value.scode = DISP_E_PARAMNOTFOUND;
    }
    return value;
  }

  // Script hosts know arrays of variants only; the parameters are arrays of 16-bit numbers.
  static void TakeArray(Variant& value) {
    if (value.vt == (VT_ARRAY | VT_I2)) return;
    if (value.vt != (VT_ARRAY | VT_VARIANT)) throw TypeMismatch();
    Variant converted;
    converted.parray = NewArray(Int16ArrayOf(value.parray));
    converted.vt = VT_ARRAY | VT_I2;
    value = std::move(converted);
  }

  // Nothing, in the words of the hosts that have another for it.
  static void TakeNothing(Variant& value) {
    if (value.vt != VT_EMPTY && value.vt != VT_NULL) return;
    value.vt = VT_DISPATCH;
    value.pdispVal = nullptr;
  }

  ITypeInfo* info_;
  const FUNCDESC& member_;
  std::size_t count_;
  std::vector<const VARIANT*> given_;
  std::vector<UINT> givenAt_;  // where each stood in the caller's list
  std::vector<Variant> held_;
  std::vector<VARIANT> passed_;  // borrowed from held_ or given_
};

// reader.Windows(1): the arguments are those of the collection's default member.
bool IsDefaultMemberCall(ITypeInfo* info, const FUNCDESC& member, const DISPPARAMS& given) {
  return member.invkind == INVOKE_PROPERTYGET && member.cParams == 0 && given.cArgs > 0 &&
         VariantTypeOf(info, member.elemdescFunc.tdesc) == VT_DISPATCH;
}

HRESULT InvokeDefaultMember(IDispatch* object, ITypeInfo* info, DISPID id, DISPPARAMS* given, VARIANT* result,
                            EXCEPINFO* exception, UINT* wrong) {
  Variant collection;
  DISPPARAMS none = {};
  const HRESULT status =
      DispInvoke(object, info, id, DISPATCH_PROPERTYGET, &none, &collection, exception, wrong);
  if (FAILED(status)) return status;
  if (collection.vt != VT_DISPATCH || collection.pdispVal == nullptr) return DISP_E_BADPARAMCOUNT;
  return collection.pdispVal->Invoke(DISPID_VALUE, IID_NULL, LOCALE_USER_DEFAULT,
                                     DISPATCH_PROPERTYGET | DISPATCH_METHOD, given, result, exception, wrong);
}

HRESULT InvokeFound(IDispatch* object, ITypeInfo* info, const FUNCDESC& member, DISPPARAMS* given,
                    VARIANT* result, EXCEPINFO* exception, UINT* wrong) {
  if (IsDefaultMemberCall(info, member, *given)) {
    return InvokeDefaultMember(object, info, member.memid, given, result, exception, wrong);
  }
  Arguments arguments(info, member);
  HRESULT status = arguments.Order(*given, wrong);
  if (SUCCEEDED(status)) status = arguments.Prepare(wrong);
  if (FAILED(status)) return status;
  status = arguments.Call(object, result, exception, wrong);
  return SUCCEEDED(status) ? arguments.WriteBack(wrong) : status;
}

}  // namespace

HRESULT InvokeMember(IDispatch* object, ITypeInfo* info, DISPID id, WORD flags, DISPPARAMS* given,
                     VARIANT* result, EXCEPINFO* exception, UINT* wrong) {
  if (given == nullptr) return E_INVALIDARG;
  HRESULT status = DISP_E_MEMBERNOTFOUND;
  const auto error = Attempt([&] {
    Member member;
    if (member.Find(info, id, flags)) {
      status = InvokeFound(object, info, *member, given, result, exception, wrong);
    }
  });
  return error ? E_OUTOFMEMORY : status;
}

}  // namespace tesk::automation
