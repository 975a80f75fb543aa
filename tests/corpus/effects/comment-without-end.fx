float a = 1;
/* and then it
breaks off