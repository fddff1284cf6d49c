// AImageFilter: the catalogue of image filters with their parameters, and applying one to an image.
#pragma once

#include "kit/BitmapContext.h"
#include "kit/CIImage.h"
#include "kit/Geometry.h"

#include <cstddef>
#include <string>
#include <vector>

/// Kinds of a parameter's value (`nType`). The catalogue's own entries use only the float and
/// point kinds; 0, 3 and 4 are whole-number kinds that compare their first 32 bits.
inline constexpr int kUnivariableFloat = 1;
inline constexpr int kUnivariablePoint = 9;

/// Bits of `nFlags`: which of the default, maximum and minimum slots hold a value.
inline constexpr int kUnivariableHasDefault = 1;
inline constexpr int kUnivariableHasMax = 2;
inline constexpr int kUnivariableHasMin = 4;

/// One adjustable parameter of a filter, a fixed record of 2256 bytes. A slot holds a float in
/// its first 4 bytes (float kind) or a point as two floats x, y in its first 8 (point kind).
struct AUNI_VARIABLE {
    char szName[100]; ///< display name, NUL-terminated
    char szKey[100]; ///< the filter's input key, NUL-terminated
    int nType; ///< kUnivariableFloat, kUnivariablePoint, or 0, 3, 4
    unsigned char value[512]; ///< the current value
    int nFlags; ///< kUnivariableHas* bits
    unsigned char valueDefault[512];
    unsigned char valueMax[512];
    unsigned char valueMin[512];
};

static_assert(sizeof(AUNI_VARIABLE) == 2256);
static_assert(offsetof(AUNI_VARIABLE, szName) == 0);
static_assert(offsetof(AUNI_VARIABLE, szKey) == 100);
static_assert(offsetof(AUNI_VARIABLE, nType) == 200);
static_assert(offsetof(AUNI_VARIABLE, value) == 204);
static_assert(offsetof(AUNI_VARIABLE, nFlags) == 716);
static_assert(offsetof(AUNI_VARIABLE, valueDefault) == 720);
static_assert(offsetof(AUNI_VARIABLE, valueMax) == 1232);
static_assert(offsetof(AUNI_VARIABLE, valueMin) == 1744);

/// One filter of the catalogue: display name, the filter's name in the kit, and its parameters.
struct _AstructAlgorithmItem {
    std::string strName;
    std::string strFilterName;
    int nReserved = -1; ///< 0 in every catalogue entry; nothing reads it
    std::vector<AUNI_VARIABLE> vectorParam;
};

/// The catalogue: 22 filters, built once when the plug-in is loaded and read-only afterwards.
class CAImageFilterInfo {
public:
    /// Starts empty and appends the catalogue's entries.
    CAImageFilterInfo();
    /// The one catalogue, built at load.
    static CAImageFilterInfo* GetImageFilterInfoInstance();
    /// Appends the 22 entries in the catalogue's order.
    void Init();

    std::vector<_AstructAlgorithmItem> m_arrAlgorithm;
};

// Entry and parameter indexes must lie below GetFiltersCount() and GetFilterParaCount(entry):
// the listing functions trust them.

int GetFiltersCount();
std::string GetFilterName(int index);
int GetFilterParaCount(int index);
std::string GetFilterParamName(int index, int param);
/// The float parameter's maximum, minimum or default; 0 for a point or an absent slot.
float GetFilterParamMax(int index, int param);
float GetFilterParamMin(int index, int param);
float GetFilterParamDefault(int index, int param);

/// Applies entry `index` to `image`, its first parameter set to `value` when that is a float;
/// every other input keeps the filter's own default. The caller gives the handle to
/// DestroyImageFilter. The handle's filter and output are null when the kit lacks the filter.
void* CreateFilterForImage(kit::CIImage* image, int index, float value);
/// Nothing for a null handle.
void DestroyImageFilter(void* handle);
/// Sets float parameter `param` of the applied filter; ignored for a null handle, one without
/// output or filter, an index out of range or a parameter that is not a float. The output image
/// stays the one taken when the handle was made (it reads the inputs when drawn).
void ModifyImageFilterParm(void* handle, int param, float value);
/// The filter's current value of float parameter `param`, or 0 where ModifyImageFilterParm
/// would ignore the call.
float GetImageFilterParm(void* handle, int param);
/// The handle's output image; null for a null handle.
kit::CIImage* GetOutImage(void* handle);
/// Draws the `source` part of the image into `destination` of the bitmap context.
void RenderCIImage(kit::BitmapContext* context, kit::CIImage* image, kit::Rect destination, kit::Rect source);

/// Same kind, same display name and, by kind, the same value: whole-number kinds bit for bit,
/// floats within 1e-7. Keys are not compared. Any other kind, points included, is a broken
/// invariant.
bool IsUnivariableEqual(const AUNI_VARIABLE& a, const AUNI_VARIABLE& b);
/// The parameters pairwise equal; the lists must be equally long. Names are not compared.
bool IsAlgorithmEqual(const _AstructAlgorithmItem& Alg1, const _AstructAlgorithmItem& Alg2);
