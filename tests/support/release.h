// Tearing down a component tree in tests: a component never frees its file
// sets, its generator registry or the generators in it, so the caller does.
#ifndef KALDATA_TESTS_SUPPORT_RELEASE_H
#define KALDATA_TESTS_SUPPORT_RELEASE_H

class kalcomponent;

// Destroys the component (which must be nobody's instance, or already taken
// out of its design) and then everything the tree below it left to its caller.
void release(kalcomponent* root);

// Frees only what the component and its instances leave to the caller; for a
// component that its design destroys itself.
void releaseLeftovers(kalcomponent* component);

#endif
