// A host program that registers the base library and builds a two-entry block list.
#include <orlo/orlo.h>

#include <cstdio>

int main() {
  Orlo::RegisterBaseLibrary();
  int status = 0;
  if (Orlo::SceneEngine::GetNumBlockFactories() == 0) status = 1;
  Orlo::BlockTable* table = new Orlo::BlockTable(true);
  table->PushBack(new Orlo::BlockTable(true));
  if (table->GetNumBlocks() != 1) status = 1;
  table->DeleteThisBlock(true);
  Orlo::SceneEngine::DestroyFactories();
  std::printf("host %s\n", status == 0 ? "ok" : "failed");
  return status;
}
