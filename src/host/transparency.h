// The host's transparency objects, which leave the filter in KEY_TSPY. The host deletes them.
#pragma once

#include <vector>

#include "host/matrix.h"

enum TransparencyType { kUniformTransparency = 1, kLinearTransparency = 3, kRadialTransparency = 4 };

struct CTransMarker {
  int position;  // percent along the gradient, at most 99
  int opacity;   // percent
};

class CQXTransparency {
 public:
  // A new object of the class that belongs to the type: 1 uniform, 3 linear, 4 radial; null for any other type.
  static CQXTransparency* CreateTransparency(int type);
  virtual ~CQXTransparency();
  virtual int Type() const = 0;
};

class CQXUniformTransparency : public CQXTransparency {
 public:
  ~CQXUniformTransparency() override;
  int Type() const override;

  unsigned char opacity = 255;  // 0 transparent to 255 opaque
};

class CQXShapeTransparency : public CQXTransparency {
 public:
  ~CQXShapeTransparency() override;

  void ChangeWorldToFillTm(TM matrix);
  int AddOpacityMarker(CTransMarker marker);  // the number of markers

  double length = 0.0;  // host units, as `fillScale` of the fill it lies over
  double angle = 0.0;   // degrees

 private:
  friend struct TransparencyAccess;  // the host's own way in
  TM worldToFill_ = {1.0, 0.0, 0.0, 1.0, 0.0, 0.0};
  std::vector<CTransMarker> markers_;
};

class CQXLinearTransparency : public CQXShapeTransparency {
 public:
  ~CQXLinearTransparency() override;
  int Type() const override;
};

class CQXRadialTransparency : public CQXShapeTransparency {
 public:
  ~CQXRadialTransparency() override;
  int Type() const override;
};
