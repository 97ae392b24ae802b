/* The classic conversions as the Windows automation library performs them, one case a
 * line. Built with MinGW and run under Wine, it answers the cases that
 * zorvat_format_diff generates, so the project's engine can be compared with an
 * implementation nobody here wrote.
 *
 *   oleaut_oracle.exe CASES ANSWERS
 *
 * A case is a line of tab-separated fields (see format_diff.cpp for the grammar):
 *   F <type> <value> <pattern>   VarFormat of the value with the pattern
 *   N <text>                     VarR8FromStr
 *   B <bits>                     VarBstrFromR8 of the double with these IEEE bits
 *   D <text>                     VarDateFromStr
 *   Y                            the user's two-digit-year window: GetCalendarInfoW with
 *                                CAL_ITWODIGITYEARMAX, answered "ok<TAB>year"
 * A value's type is s (text), d (double bits), l (32-bit integer), b (Boolean: 0 or 1),
 * t (date, double bits), e (Empty), n (Null).
 * Each answer line is "ok<TAB>text" (a double as its 16 hex digits of bits) or
 * "err<TAB>hresult in hex". The locale is US English (LCID 0x409) throughout. */
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#include <oleauto.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static const LCID kUsEnglish = 0x409;

static BSTR to_bstr(const char *text) {
  int length = MultiByteToWideChar(CP_UTF8, 0, text, -1, NULL, 0);
  WCHAR *wide = (WCHAR *)malloc(sizeof(WCHAR) * (size_t)length);
  MultiByteToWideChar(CP_UTF8, 0, text, -1, wide, length);
  BSTR result = SysAllocString(wide);
  free(wide);
  return result;
}

static void write_bstr(FILE *out, BSTR text) {
  if (!text) {
    fputs("ok\t\n", out);
    return;
  }
  int length = WideCharToMultiByte(CP_UTF8, 0, text, (int)SysStringLen(text), NULL, 0, NULL, NULL);
  char *narrow = (char *)malloc((size_t)length + 1);
  WideCharToMultiByte(CP_UTF8, 0, text, (int)SysStringLen(text), narrow, length, NULL, NULL);
  narrow[length] = 0;
  fprintf(out, "ok\t%s\n", narrow);
  free(narrow);
}

static double from_bits(const char *hex) {
  unsigned long long bits = strtoull(hex, NULL, 16);
  double value;
  memcpy(&value, &bits, sizeof value);
  return value;
}

static void write_double(FILE *out, double value) {
  unsigned long long bits;
  memcpy(&bits, &value, sizeof bits);
  fprintf(out, "ok\t%016llx\n", bits);
}

/* Splits the line at tabs in place; returns the number of fields. */
static int split(char *line, char **fields, int most) {
  int count = 0;
  fields[count++] = line;
  for (char *p = line; *p && count < most; ++p) {
    if (*p == '\t') {
      *p = 0;
      fields[count++] = p + 1;
    }
  }
  return count;
}

static HRESULT format_case(char **fields, int count, BSTR *out) {
  if (count < 4) return E_FAIL;
  VARIANT value;
  VariantInit(&value);
  switch (fields[1][0]) {
    case 's':
      V_VT(&value) = VT_BSTR;
      V_BSTR(&value) = to_bstr(fields[2]);
      break;
    case 'd':
      V_VT(&value) = VT_R8;
      V_R8(&value) = from_bits(fields[2]);
      break;
    case 'l':
      V_VT(&value) = VT_I4;
      V_I4(&value) = atol(fields[2]);
      break;
    case 'b':
      V_VT(&value) = VT_BOOL;
      V_BOOL(&value) = fields[2][0] == '1' ? VARIANT_TRUE : VARIANT_FALSE;
      break;
    case 't':
      V_VT(&value) = VT_DATE;
      V_DATE(&value) = from_bits(fields[2]);
      break;
    case 'n':
      V_VT(&value) = VT_NULL;
      break;
    default:
      V_VT(&value) = VT_EMPTY;
      break;
  }
  BSTR pattern = to_bstr(fields[3]);
  /* VarFormat with the locale fixed: the tokenizer and renderer it is made of, both
   * given US English instead of the user's default. */
  BYTE tokens[1024];
  HRESULT hr = VarTokenizeFormatString(pattern, tokens, sizeof tokens, 1, 1, kUsEnglish, NULL);
  if (SUCCEEDED(hr)) hr = VarFormatFromTokens(&value, pattern, tokens, 0, out, kUsEnglish);
  SysFreeString(pattern);
  VariantClear(&value);
  return hr;
}

int main(int argc, char **argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: oleaut_oracle CASES ANSWERS\n");
    return 2;
  }
  FILE *in = fopen(argv[1], "rb");
  FILE *out = fopen(argv[2], "wb");
  if (!in || !out) {
    fprintf(stderr, "oleaut_oracle: cannot open the files\n");
    return 2;
  }
  static char line[65536];
  long answered = 0;
  while (fgets(line, sizeof line, in)) {
    size_t length = strlen(line);
    while (length && (line[length - 1] == '\n' || line[length - 1] == '\r')) line[--length] = 0;
    char *fields[8];
    int count = split(line, fields, 8);
    HRESULT hr = E_FAIL;
    if (fields[0][0] == 'F') {
      BSTR text = NULL;
      hr = format_case(fields, count, &text);
      if (SUCCEEDED(hr)) write_bstr(out, text);
      SysFreeString(text);
    } else if (fields[0][0] == 'N' && count >= 2) {
      BSTR text = to_bstr(fields[1]);
      double value = 0;
      hr = VarR8FromStr(text, kUsEnglish, 0, &value);
      if (SUCCEEDED(hr)) write_double(out, value);
      SysFreeString(text);
    } else if (fields[0][0] == 'B' && count >= 2) {
      BSTR text = NULL;
      hr = VarBstrFromR8(from_bits(fields[1]), kUsEnglish, 0, &text);
      if (SUCCEEDED(hr)) write_bstr(out, text);
      SysFreeString(text);
    } else if (fields[0][0] == 'D' && count >= 2) {
      BSTR text = to_bstr(fields[1]);
      DATE value = 0;
      hr = VarDateFromStr(text, kUsEnglish, 0, &value);
      if (SUCCEEDED(hr)) write_double(out, value);
      SysFreeString(text);
    } else if (fields[0][0] == 'Y') {
      DWORD year = 0;
      if (GetCalendarInfoW(LOCALE_USER_DEFAULT, CAL_GREGORIAN,
                           CAL_ITWODIGITYEARMAX | CAL_RETURN_NUMBER, NULL, 0, &year)) {
        fprintf(out, "ok\t%lu\n", (unsigned long)year);
        hr = S_OK;
      } else {
        hr = HRESULT_FROM_WIN32(GetLastError());
      }
    }
    if (FAILED(hr)) fprintf(out, "err\t%08lx\n", (unsigned long)hr);
    fflush(out);
    ++answered;
  }
  fprintf(out, "end\t%ld\n", answered);
  fclose(out);
  fclose(in);
  return 0;
}
