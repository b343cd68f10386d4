#include "FragmentWall.h"

FragmentWall::FragmentWall(QWidget *parent)
    : Wall(parent)
{ }

void FragmentWall::install(FragmentStackView *) { }
