/* all_clutter.h - ground, sea and wind-turbine clutter told apart. */
#ifndef SCAN_CLASSES_ALL_CLUTTER_H
#define SCAN_CLASSES_ALL_CLUTTER_H

class Crres;

namespace scan {

/*
 * Replaces the classes of a context whose classification stage has run: every gate that is not
 * noise gets one of four classes (precipitation, ground, sea and turbine clutter) from the same
 * inputs. Throws std::runtime_error when a membership file is missing.
 */
void tellClutterApart(Crres& context, int mask);

}  // namespace scan

#endif
