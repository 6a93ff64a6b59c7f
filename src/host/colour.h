// The host's colour and overprint objects.
//
// The filter builds them on the ordinary heap with `new` and hands them over in KEY_NFIL, KEY_NOTL, KEY_LYOT and
// KEY_LIOT; the host deletes them. Their insides belong to the host.
#pragma once

enum COLORSPACE { kRgbSpace = 1, kCmykSpace = 3 };
enum CORRECTION_MODE { kNoCorrection = 0, kNamedColourCorrection = 5 };
enum REFLECTIVITY { kMatt = 0 };
enum OVERLAY_TYPE { kNoOverlay = 0, kOverlay = 1 };

class CQXColor {
 public:
  // `value` is a 32-bit colour: with space 1 red in the low byte, then green, then blue, and 0xFFFFFFFF for the
  // invisible colour; with space 3 four ink bytes, cyan in the low byte, then magenta, yellow, black.
  CQXColor(unsigned long value, COLORSPACE space, CORRECTION_MODE correction, REFLECTIVITY reflectivity);
  CQXColor(const CQXColor& other);
  CQXColor& operator=(const CQXColor& other);
  ~CQXColor();

  void SetColor(const double& red, const double& green, const double& blue, COLORSPACE space);  // 0 to 255
  void SetColor(const double& cyan, const double& magenta, const double& yellow, const double& black,
                COLORSPACE space);  // 0 to 1
  void SetTint(double percent);
  void SetCartridge(int cartridge);
  void SetCorrectionMode(CORRECTION_MODE correction);

  int IsInvisibleColor() const;
  int IsProcessColor() const;
  int IsSpotColor() const;
  int IsSpotFoil() const;
  // Inks on the scale 0 to 1.
  void GetCMYKcolor(double* cyan, double* magenta, double* yellow, double* black) const;

 private:
  friend struct ColourAccess;  // the host's own way in
  alignas(8) unsigned char hostData_[424];
};

class CQXFullColor : public CQXColor {
 public:
  CQXFullColor(unsigned long value, COLORSPACE space, CORRECTION_MODE correction, REFLECTIVITY reflectivity);
  CQXFullColor(const CQXFullColor& other);
  CQXFullColor& operator=(const CQXFullColor& other);
  ~CQXFullColor();

  // The spot name, copied.
  void SetColorName(const char16_t* name) const;

 private:
  friend struct ColourAccess;
  alignas(8) mutable unsigned char hostName_[16];
};
static_assert(sizeof(CQXFullColor) == 440);

class CQXOverPrint {
 public:
  CQXOverPrint();
  ~CQXOverPrint();
  CQXOverPrint(const CQXOverPrint&) = delete;
  CQXOverPrint& operator=(const CQXOverPrint&) = delete;

  void SetOverlayType(OVERLAY_TYPE type, bool flag);

 private:
  friend struct ColourAccess;
  alignas(8) unsigned char hostData_[40];
};
static_assert(sizeof(CQXOverPrint) == 40);

// Inks on the scale 0 to 255 to red, green and blue bytes.
void BmpCMYKtoRGB(float cyan, float magenta, float yellow, float black, unsigned char* red, unsigned char* green,
                  unsigned char* blue);

// The same through the host's colour management; 0, with nothing written, when no conversion is at hand.
int VectorCMYKtoRGB(float cyan, float magenta, float yellow, float black, unsigned char* red, unsigned char* green,
                    unsigned char* blue);
