// The host's spot fill objects, which leave the filter in KEY_SPFL. The host deletes them.
#pragma once

#include <cstddef>

#include "host/colour.h"
#include "host/matrix.h"

struct CSpotMarker {
  int position;  // percent along the fill
  int tint;      // percent
};

class CQXGradientFill {
 public:
  CQXGradientFill();
  virtual ~CQXGradientFill();
  CQXGradientFill(const CQXGradientFill&) = delete;
  CQXGradientFill& operator=(const CQXGradientFill&) = delete;

  void ChangeFillAngle(double degrees);
  void ChangeXOffset(double offset);
  void ChangeYOffset(double offset);
  void ChangeFillLengthRatio(double ratio);
  void ChangeWorldToFillTm(TM matrix);

 protected:
  friend struct FillAccess;  // the host's own way in
  alignas(8) unsigned char hostData_[336];
};

class CQXSpotFill : public CQXGradientFill {
 public:
  CQXSpotFill();
  ~CQXSpotFill() override;

  // Spot fills live in memory of their own; the class's delete gives it back.
  static void* operator new(std::size_t size);
  static void operator delete(void* block);

  void ChangeFromColor(CQXColor colour);
  void ChangeToColor(CQXColor colour);
  void ChangeDuotone(int duotone);
  void AddFromColorMarker(CSpotMarker marker);

 protected:
  friend struct FillAccess;
  alignas(8) unsigned char spotData_[344];
};

class CQXLinearSpotFill : public CQXSpotFill {
 public:
  CQXLinearSpotFill();
  ~CQXLinearSpotFill() override;
};
static_assert(sizeof(CQXLinearSpotFill) == 688);
